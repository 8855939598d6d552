#include "platform/scratch.h"

#include <vorn/support.h>

#include <cerrno>
#include <cstring>

#include "support/file_error.h"

namespace {

// In front of each block: the size of its mapping. As long as a cache line, so that the block
// begins at one.
constexpr size_t kHead = 64;

}  // namespace

extern "C" {

void* AllocScratch(size_t size) {
    void* mapping = nullptr;
    const size_t whole = size + kHead;
    vorn::lastFileError() = whole < size ? EFBIG : vorn::platform::mapScratch(whole, mapping);
    if (vorn::lastFileError() != 0) return nullptr;
    std::memcpy(mapping, &whole, sizeof whole);
    return static_cast<uint8_t*>(mapping) + kHead;
}

void FreeScratch(void* block) {
    if (!block) return;
    void* const mapping = static_cast<uint8_t*>(block) - kHead;
    size_t whole = 0;
    std::memcpy(&whole, mapping, sizeof whole);
    vorn::platform::unmapScratch(mapping, whole);
}

const char* ScratchFolder(void) { return vorn::platform::scratchFolder(); }

}  // extern "C"
