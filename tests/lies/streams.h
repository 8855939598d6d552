// What a module says and waits for in a conversation, before and after lies are told in it.
#pragma once

#include <vorn/types.h>

#include <vector>

#include "tests/lies/scripted_module.h"
#include "tests/pixels/picture.h"

using vorn::test::oneOf;
using vorn::test::pick;
using vorn::test::Random;

// A chance of one in so many.
inline bool chance(Random& random, int oneIn) { return pick(random, 1, oneIn) == 1; }

struct StreamStep {
    bool takes = false;
    MessageItems items = {};
};

struct Stream {
    int32_t type = VORN_LOADER;
    VORN_DataFormat format{};  // of the picture that the stream is about
    int32_t meterTicks = 0;    // of a saver's host
    bool hasCommand = false;   // the host sends a module command behind the information
    int rounds = 1;            // how often the picture is opened
    std::vector<StreamStep> steps;

    Stream& takes() {
        steps.push_back({true});
        return *this;
    }
    Stream& sends(MessageItems items = MessageBytes().items()) {
        steps.push_back({false, std::move(items)});
        return *this;
    }
};

Stream goodStream(Random& random);

// Tells one lie.
void tellLie(Random& random, Stream& stream);

std::vector<ScriptStep> scriptOf(const Stream& stream);

// Bytes of the longest message.
uint32_t longestMessage(const std::vector<ScriptStep>& script);
