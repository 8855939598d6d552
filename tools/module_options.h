// The options that the commands which start modules share: what a user allows each module program,
// and which page is meant.
#pragma once

#include <vorn/host.h>

#include <CLI/CLI.hpp>

namespace vorn::tool {

void addLimitOptions(CLI::App& command, VORN_ModuleLimits& limits);

// Which page or frame of a file is meant; 0 when the user doesn't say.
void addPageOption(CLI::App& command, int32_t& page);

}  // namespace vorn::tool
