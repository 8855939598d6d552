#include "tools/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace vorn::tool {

bool errorIsTerminal() { return isatty(STDERR_FILENO) == 1; }

int errorTerminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return 80;
    }
    return size.ws_col;
}

}  // namespace vorn::tool
