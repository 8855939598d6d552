// The same work done by other libraries, for comparison. Their samples differ from ours.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorn_bench {

enum class Kind { Area, Cubic, Linear, Nearest };

// RGB of 8 bits, or one plane of 16 bits. Lines begin where peers want them.
struct Pixels {
    int32_t width, lines, channels, bytes;

    Pixels(int32_t w, int32_t h, int32_t c, int32_t b)
        : width(w), lines(h), channels(c), bytes(b), memory_(size() + 64) {}
    size_t lineBytes() const {
        return static_cast<size_t>(width * channels * bytes + 63) / 64 * 64;
    }
    size_t size() const { return lineBytes() * static_cast<size_t>(lines); }
    uint8_t* data() const {
        const auto address = reinterpret_cast<uintptr_t>(memory_.data());
        return reinterpret_cast<uint8_t*>((address + 63) / 64 * 64);
    }

  private:
    std::vector<uint8_t> memory_;
};

struct Peer {
    std::string name;
    std::function<void()> scale;
};

// The peers that can do this; they keep references to both.
std::vector<Peer> peers(Kind kind, const Pixels& from, Pixels& to);

}  // namespace vorn_bench
