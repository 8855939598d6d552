// What a user allows each module program: the options that the commands which start modules share.
#pragma once

#include <vorn/host.h>

#include <CLI/CLI.hpp>

namespace vorn::tool {

void addLimitOptions(CLI::App& command, VORN_ModuleLimits& limits);

}  // namespace vorn::tool
