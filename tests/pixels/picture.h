// Pixel memory with guards around it, in any layout, for tests that compare every byte.
#pragma once

#include <vorn/library.h>

#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

namespace vorn::test {

using Random = std::mt19937;

inline int pick(Random& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

template <class List>
auto oneOf(Random& random, const List& list) {
    return list[static_cast<size_t>(pick(random, 0, static_cast<int>(std::size(list)) - 1))];
}

struct Shape {
    int width = 1;
    int height = 1;
    int channels = 1;
    int bytes = 1;
};

class Picture {
  public:
    static constexpr uint8_t kUntouched = 0xA5;  // what guards and gaps hold

    // Memory for a record whose places are offsets into it; `size` bytes hold all samples. Without
    // a guard, a checker of addresses sees the first byte too much.
    Picture(const VORN_DataFormat& format, size_t size, size_t guard = 64);

    // A standard layout, one of the forms of setExplicitSteps, or any steps and places.
    static Picture standard(int layout, int width, int height, int channels, size_t guard = 64);
    static Picture inForm(const char* form, const Shape& shape, size_t guard = 64);
    static Picture any(Random& random, const Shape& shape, size_t guard = 64);

    void fill(Random& random);
    void drop(int channel) { record.channelPlace[channel] = nullptr; }

    // A copy whose record looks at the copy's memory, and the record for a copy at `bytes`.
    Picture clone() const;
    VORN_ChunkyBuffer recordAt(uint8_t* bytes) const;

    // Puts the untouched value over every sample; whether everything holds it then.
    bool hasIntactGaps();

    int get(int channel, int x, int y) const;
    void set(int channel, int x, int y, int value);
    bool has(int channel) const {
        return channel < record.channels && record.channelPlace[channel] != nullptr;
    }

    VORN_ChunkyBuffer record{};
    std::vector<uint8_t> memory;

  private:
    uint8_t* at(int channel, int x, int y) const;
};

}  // namespace vorn::test
