// What an honest host may make of a module's messages: read anew, byte by byte, with nothing of the
// library's.
#pragma once

#include <vorn/types.h>

#include <optional>
#include <span>

#include "tests/lies/scripted_module.h"

// A block of lines that a message brings.
struct SentBlock {
    int32_t lines = 0;
    VORN_DataFormat format{};  // to a saver
    std::span<const uint8_t> data;
};

// Nothing when the message isn't whole, or says anything else than lines.
std::optional<SentBlock> blockIn(const Bytes& area);

// One sample of a block, by the format's steps and places. Nothing when it doesn't lie inside the
// data.
std::optional<int32_t> sampleOf(
    const SentBlock& block, const VORN_DataFormat& format, int32_t channel, int32_t x, int32_t y);

bool mentionsError(const Bytes& area);
