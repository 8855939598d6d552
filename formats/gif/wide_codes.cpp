#include "formats/gif/wide_codes.h"

#include "formats/common/failure.h"

namespace gif {
namespace {

using formats::Failure;

constexpr unsigned kMostCodeBits = 12;

unsigned byteOf(formats::InputFile& file) {
    const int byte = file.nextByte();
    if (byte < 0) throw Failure{formats::kDamaged};
    return static_cast<unsigned>(byte);
}

}  // namespace

WideCodes::WideCodes(formats::InputFile& file, int bits)
    : file_(&file), bits_(static_cast<unsigned>(bits)), clear_(1u << bits_) {
    reset();
}

void WideCodes::reset() {
    size_ = bits_ + 1;
    next_ = clear_ + 2;
    before_ = kNone;
}

uint8_t WideCodes::next() {
    if (string_.empty()) readString();
    const uint16_t pixel = string_.back();
    string_.pop_back();
    if (pixel > 255) throw Failure{formats::kDamaged};
    return static_cast<uint8_t>(pixel);
}

void WideCodes::skipRest() {
    while (!ended_) {
        for (; block_ > 0; --block_) byteOf(*file_);
        block_ = byteOf(*file_);
        ended_ = block_ == 0;
    }
}

unsigned WideCodes::readCode() {
    while (readBits_ < size_) {
        if (block_ == 0 && !ended_) {
            block_ = byteOf(*file_);
            ended_ = block_ == 0;
        }
        if (ended_) throw Failure{formats::kDamaged};
        read_ |= uint64_t{byteOf(*file_)} << readBits_;
        readBits_ += 8;
        --block_;
    }
    const auto code = static_cast<unsigned>(read_ & ((1u << size_) - 1));
    read_ >>= size_;
    readBits_ -= size_;
    return code;
}

// A code stands for the string of another one and one pixel more; the newest one may be used before
// that pixel is known, which is then the string's own first.
void WideCodes::readString() {
    unsigned code = readCode();
    while (code == clear_) {
        reset();
        code = readCode();
    }
    const unsigned known = before_ == kNone ? clear_ : next_ + 1;
    if (code >= known || code == clear_ + 1) throw Failure{formats::kDamaged};
    unsigned at = code;
    if (code == next_) {
        string_.push_back(static_cast<uint16_t>(first_));
        at = before_;
    }
    for (; at > clear_; at = prefix_[at]) string_.push_back(last_[at]);
    string_.push_back(static_cast<uint16_t>(at));
    first_ = at;
    if (before_ != kNone && next_ < kMostCodes) {
        prefix_[next_] = static_cast<uint16_t>(before_);
        last_[next_] = static_cast<uint16_t>(first_);
        ++next_;
        if (next_ == 1u << size_ && size_ < kMostCodeBits) ++size_;
    }
    before_ = code;
}

}  // namespace gif
