// A band of lines used as a ring: how many lines were put in and taken out, and where the next ones
// lie. All channels of a band move together, absent ones included, so one ring serves them all; the
// address of a channel's line follows from the channel's own place and line step.
#pragma once

#include <algorithm>
#include <cstdint>

namespace vorn {

class BandRing {
  public:
    BandRing() = default;
    explicit BandRing(int32_t capacity) : capacity_(capacity) {}  // lines of the band, at least 1

    bool empty() const { return written_ == read_; }
    bool full() const { return written_ - read_ == capacity_; }
    int64_t written() const { return written_; }  // lines put in since the start
    int32_t waiting() const { return static_cast<int32_t>(written_ - read_); }

    // Index within the band of the next line to take, or one behind it, and of the next to put.
    int32_t readLine(int32_t behind = 0) const {
        return static_cast<int32_t>((read_ - base_ + behind) % capacity_);
    }
    int32_t writeLine() const { return static_cast<int32_t>((written_ - base_) % capacity_); }

    // Lines that can be put one below the other, the ring's last line at most.
    int32_t freeBelow() const { return std::min(capacity_ - waiting(), capacity_ - writeLine()); }

    // Puts lines in, at most until the ring is full.
    void put(int32_t lines) {
        written_ += std::clamp<int64_t>(lines, 0, capacity_ - (written_ - read_));
    }

    // Puts lines into an empty ring, from the band's first line on.
    void refill(int32_t lines) {
        base_ = written_;
        put(lines);
    }

    void take() { ++read_; }
    void takeAll() { read_ = written_; }

  private:
    int32_t capacity_ = 1;
    int64_t written_ = 0;
    int64_t read_ = 0;
    int64_t base_ = 0;  // the count at which the band's first line was used
};

}  // namespace vorn
