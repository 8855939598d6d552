// Message streams of modules: what a good loader or saver would send, made up from a seed, and what
// a lying one makes of it.
#pragma once

#include <vorn/types.h>

#include <cstdint>
#include <random>
#include <vector>

#include "tests/lies/scripted_module.h"

using Random = std::mt19937;

// A number from `low` to `high`, one out of a list, and a chance of one in so many.
int64_t pick(Random& random, int64_t low, int64_t high);
template <class List>
auto oneOf(Random& random, const List& list) {
    return *(std::begin(list) + pick(random, 0, static_cast<int64_t>(std::size(list)) - 1));
}
inline bool chance(Random& random, int oneIn) { return pick(random, 1, oneIn) == 1; }

struct StreamItem {
    uint32_t id;
    uint32_t length;  // what the item says of its length
    Bytes data;       // what follows its head
};

struct StreamStep {
    bool takes = false;
    std::vector<StreamItem> items = {};
};

// The picture that the stream is about.
struct StreamPicture {
    VORN_DataFormat format{};
    int32_t colorSpace = VORN_CS_RGB;
    int32_t blocks = 0;  // of a saver's host
    int32_t meterTicks = 0;
};

struct Stream {
    int32_t type = VORN_LOADER;
    StreamPicture picture;
    bool hasCommand = false;  // the host sends a module command behind the information
    int rounds = 1;           // how often the picture is opened
    std::vector<StreamStep> steps;
};

Stream goodStream(Random& random);

// Tells one lie.
void tellLie(Random& random, Stream& stream);

std::vector<ScriptStep> scriptOf(const Stream& stream);

// Bytes of the longest message.
uint32_t longestMessage(const std::vector<ScriptStep>& script);
