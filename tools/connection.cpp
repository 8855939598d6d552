#include "tools/connection.h"

#include <vorn/library.h>

#include <utility>

#include "tools/failure.h"

namespace vorn::tool {

Connection::Connection(const std::string& module,
                       int32_t type,
                       std::string file,
                       const Limits& limits,
                       Interrupts& interrupts)
    : file_(std::move(file)),
      interrupts_(interrupts),
      handle_(module, type, file_, limits),
      watch_(interrupts, handle_.get()) {}

Connection::~Connection() { abandonLines(); }

void Connection::abandonLines() {
    if (std::exchange(moving_, false)) {
        VORN_L_SendCMDAbort(image());
    }
}

// What went wrong first counts; where nothing is known yet, the module's last word may tell.
void Connection::fail() {
    const bool known = VORN_ErrorPairCode(VORN_H_ImageGetError(image())) != 0;
    const Failure first = libraryFailure(file_, image());
    abandonLines();
    throw known ? first : libraryFailure(file_, image());
}

}  // namespace vorn::tool
