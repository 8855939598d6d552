// What the tool asks the system about the terminal that standard error goes to.
#pragma once

namespace vorn::tool {

bool errorIsTerminal();

// Its width in columns; 80 when the terminal doesn't say.
int errorTerminalWidth();

}  // namespace vorn::tool
