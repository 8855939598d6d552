#include "tools/module_options.h"

namespace vorn::tool {

void addLimitOptions(CLI::App& command, VORN_ModuleLimits& limits) {
    command
        .add_option("--memory-limit", limits.addressSpaceBytes,
                    "The most memory for each module: 512M, 2G")
        ->transform(CLI::AsSizeValue(false))
        ->type_name("SIZE");
    command
        .add_option("--time-limit", limits.cpuSeconds,
                    "The most processor time for each module, in seconds")
        ->type_name("SECONDS");
}

void addPageOption(CLI::App& command, int32_t& page) {
    command.add_option("--page", page, "The page or frame of a file that holds several, from 1")
        ->check(CLI::PositiveNumber)
        ->type_name("NUMBER");
}

}  // namespace vorn::tool
