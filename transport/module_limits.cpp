#include "transport/module_limits.h"

#include <vorn/host.h>

#include <charconv>
#include <cstring>
#include <limits>

#include "platform/environment.h"
#include "transport/image.h"

namespace vorn {
namespace {

constexpr char kVariable[] = "VORN_MEMORY_LIMIT";

#ifdef VORN_SANITIZED
// Sanitizers reserve terabytes of addresses.
constexpr uint64_t kLoaderBytes = 0;
#else
constexpr uint64_t kLoaderBytes = uint64_t{4} << 30;
#endif

// "1073741824", "1048576K", "1024M" or "1G". False for anything else.
bool readSize(const char* text, uint64_t& bytes) {
    const char* const end = text + std::strlen(text);
    uint64_t count = 0;
    const auto [unit, error] = std::from_chars(text, end, count);
    if (error != std::errc() || end - unit > 1) return false;
    static constexpr char kUnits[] = "KkMmGg";
    const char* const known = unit == end ? nullptr : std::strchr(kUnits, *unit);
    if (unit != end && !known) return false;
    const int64_t shift = known ? 10 * ((known - kUnits) / 2 + 1) : 0;
    if (count > std::numeric_limits<uint64_t>::max() >> shift) return false;
    bytes = count << shift;
    return true;
}

}  // namespace

// A saver's input is the host's own, and some need many times the memory of a picture.
platform::ProcessLimits limitsFor(const VORN_Image& image) {
    if (image.limitsSet) return image.limits;
    platform::ProcessLimits limits;
    if (VORN_L_ImageGetModType(const_cast<VORN_Image*>(&image)) != VORN_LOADER) return limits;
    limits.addressSpaceBytes = kLoaderBytes;
    if (const char* text = platform::environmentVariable(kVariable))
        readSize(text, limits.addressSpaceBytes);
    return limits;
}

}  // namespace vorn

extern "C" {

void VORN_H_ModuleGetLimits(const VORN_Image* image, VORN_ModuleLimits* limits) {
    const vorn::platform::ProcessLimits present = vorn::limitsFor(*image);
    *limits = {present.addressSpaceBytes, present.cpuSeconds};
}

void VORN_H_ModuleSetLimits(VORN_Image* image, const VORN_ModuleLimits* limits) {
    image->limits = {limits->addressSpaceBytes, limits->cpuSeconds};
    image->limitsSet = true;
}

}  // extern "C"
