// The options that the commands which start modules share: what a user allows each module program,
// and which page is meant.
#pragma once

#include <vorn/host.h>

#include <CLI/CLI.hpp>
#include <optional>

namespace vorn::tool {

// What the user says of the limits; the library has its own.
struct Limits {
    std::optional<uint64_t> memory;   // bytes
    std::optional<uint64_t> seconds;  // of processor time

    void set(VORN_Image* image) const;
};

void addLimitOptions(CLI::App& command, Limits& limits);

// Which page or frame of a file is meant; 0 when the user doesn't say.
void addPageOption(CLI::App& command, int32_t& page);

}  // namespace vorn::tool
