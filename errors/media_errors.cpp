#include "errors/media_errors.h"

namespace vorn {
namespace {

constexpr struct {
    uint32_t code;
    const char* text;
} kMediaErrors[] = {
    {0x80044065, "AVIError - Unsupported"},
    {0x80044066, "AVIError - Bad Format"},
    {0x80044067, "AVIError - Out of Memory"},
    {0x80044068, "AVIError - Internal"},
    {0x80044069, "AVIError - Bad Flags"},
    {0x8004406A, "AVIError - Bad parameters"},
    {0x8004406B, "AVIError - Bad size"},
    {0x8004406C, "AVIError - Bad handle"},
    {0x8004406D, "AVIError - Couldn't read from file"},
    {0x8004406E, "AVIError - Couldn't write to file"},
    {0x8004406F, "AVIError - Couldn't open file"},
    {0x80044070, "AVIError - Compressor"},
    {0x80044071, "AVIError - No compressor"},
    {0x80044072, "AVIError - Read only"},
    {0x80044073, "AVIError - No data"},
    {0x80044074, "AVIError - Buffer to small"},
    {0x80044075, "AVIError - Can't compress"},
    {0x800440C6, "AVIError - User Abort"},
    {0x800440C7, "AVIError - Error"},
};

}  // namespace

const char* mediaErrorText(int32_t code) {
    for (const auto& entry : kMediaErrors) {
        if (entry.code == static_cast<uint32_t>(code)) {
            return entry.text;
        }
    }
    return nullptr;
}

}  // namespace vorn
