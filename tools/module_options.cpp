#include "tools/module_options.h"

namespace vorn::tool {

void Limits::set(VORN_Image* image) const {
    if (!memory && !seconds) {
        return;
    }
    VORN_ModuleLimits limits{};
    VORN_H_ModuleGetLimits(image, &limits);
    limits.addressSpaceBytes = memory.value_or(limits.addressSpaceBytes);
    limits.cpuSeconds = seconds.value_or(limits.cpuSeconds);
    VORN_H_ModuleSetLimits(image, &limits);
}

void addLimitOptions(CLI::App& command, Limits& limits) {
    command
        .add_option("--memory-limit", limits.memory,
                    "The most memory for each module: 512M, 2G; 0 for all there is. Without it, 4G "
                    "for the loader")
        ->transform(CLI::AsSizeValue(false))
        ->type_name("SIZE");
    command
        .add_option("--time-limit", limits.seconds,
                    "The most processor time for each module, in seconds")
        ->type_name("SECONDS");
}

void addPageOption(CLI::App& command, int32_t& page) {
    command.add_option("--page", page, "The page or frame of a file that holds several, from 1")
        ->check(CLI::PositiveNumber)
        ->type_name("NUMBER");
}

}  // namespace vorn::tool
