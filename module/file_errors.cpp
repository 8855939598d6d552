// Buffered files whose errors become the module's pending error.
#include <vorn/module.h>

#include "errors/error_numbers.h"

namespace {

void noteSystemError(int32_t number) {
    VORN_M_SetErrorCode(number | vorn::kSystemErrorType, BGetErrorCode());
}

}  // namespace

extern "C" {

int32_t VORN_M_BRead(VORN_File* file, void* buffer, int32_t count) {
    const int32_t moved = VORN_M_BReadNoEOF(file, buffer, count);
    if (moved == count || BGetErrorCode() != 0) return moved;
    VORN_M_SetErrorCode(vorn::kErrorEndOfFile, 0);
    return 0;
}

int32_t VORN_M_BReadNoEOF(VORN_File* file, void* buffer, int32_t count) {
    const int32_t moved = BRead(file, buffer, count);
    if (BGetErrorCode() == 0) return moved;
    noteSystemError(vorn::kErrorRead);
    return 0;
}

int32_t VORN_M_BWrite(VORN_File* file, const void* buffer, int32_t count) {
    const int32_t moved = BWrite(file, buffer, count);
    if (moved == count && BGetErrorCode() == 0) return moved;
    noteSystemError(vorn::kErrorWrite);
    return 0;
}

int64_t VORN_M_BSeek(VORN_File* file, int64_t offset, int32_t origin) {
    const int64_t position = BSeek(file, offset, origin);
    if (position < 0) noteSystemError(vorn::kErrorSeek);
    return position < 0 ? -1 : position;
}

}  // extern "C"
