// Names of modules and savers into callers' buffers.
#include <vorn/host.h>
#include <vorn/library.h>

#include "catalogue/module_directory.h"
#include "errors/error_numbers.h"
#include "support/text.h"

namespace vorn {
namespace {

size_t roomOf(int32_t size) { return size < 0 ? 0 : static_cast<size_t>(size); }

VORN_Bool fits(bool written) {
    if (!written) {
        VORN_L_SetErrorCode(nullptr, kErrorBufferTooSmall, 0);
    }
    return written;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_Bool VORN_H_ModuleGetName(const char* name, int32_t type, char* buffer, int32_t size) {
    const char* directory = moduleDirectory(type);
    if (name == nullptr || directory == nullptr) {
        return 0;
    }
    return fits(joinPath(buffer, roomOf(size), directory, name));
}

VORN_Bool VORN_H_ImageGetSaverName(const char* saverName, int32_t size, char* buffer) {
    return saverName != nullptr && fits(copyText(buffer, roomOf(size), saverName));
}
