// The commands of the tool. Each adds itself to the program's command line; when it is the one that
// was called, `status` receives the exit status.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/failure.h"

namespace vorn::tool {

void addInfoCommand(CLI::App& program, ExitStatus& status);
void addConvertCommand(CLI::App& program, ExitStatus& status);
void addModulesCommand(CLI::App& program, ExitStatus& status);
void addSettingsCommand(CLI::App& program, ExitStatus& status);
void addExplainCommand(CLI::App& program, ExitStatus& status);

}  // namespace vorn::tool
