#include "platform/global_memory.h"

#include <dirent.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/connection.h"

namespace vorn::platform {
namespace {

// Where programs, their heaps and their libraries are not, whether they have 32 or 64 bits.
constexpr int32_t kFirstAddress = 0x20000000;
constexpr int32_t kLastAddress = 0x50000000;
constexpr int32_t kStep = 0x100000;

constexpr size_t kNameSize = 64;

// The name that a block's memory carries: a module finds it by its address.
void nameOf(int32_t address, char (&name)[kNameSize]) {
    std::snprintf(name, sizeof name, "vorn-global-%d", address);
}

// Maps where nothing else is.
bool mapFree(int32_t address, size_t size, int protection, int flags, int descriptor) {
    void* wanted = globalPlace(address);
    void* place = ::mmap(wanted, size, protection, flags | MAP_FIXED_NOREPLACE, descriptor, 0);
    if (place == MAP_FAILED) return false;
    if (place == wanted) return true;
    ::munmap(place, size);  // systems that don't know the flag take the address for a hint
    return false;
}

int32_t reserveRange(size_t size) {
    for (int32_t address = kFirstAddress; address < kLastAddress; address += kStep) {
        if (mapFree(address, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1)) return address;
    }
    return 0;
}

int32_t numberOf(const dirent& entry) {
    char* end = nullptr;
    const long number = std::strtol(entry.d_name, &end, 10);
    return *end || end == entry.d_name ? kNoDescriptor : static_cast<int32_t>(number);
}

// The inherited descriptor whose memory carries the address's name.
int32_t findInherited(int32_t address) {
    char name[kNameSize];
    nameOf(address, name);
    char wanted[2 * kNameSize];
    std::snprintf(wanted, sizeof wanted, "/memfd:%s (deleted)", name);
    DIR* all = ::opendir("/proc/self/fd");
    if (!all) return kNoDescriptor;
    int32_t found = kNoDescriptor;
    while (const dirent* entry = found < 0 ? ::readdir(all) : nullptr) {
        char target[2 * kNameSize];
        const ssize_t length = ::readlinkat(::dirfd(all), entry->d_name, target, sizeof target);
        const bool same = length == static_cast<ssize_t>(std::strlen(wanted)) &&
                          std::memcmp(target, wanted, std::strlen(wanted)) == 0;
        if (same) found = numberOf(*entry);
    }
    ::closedir(all);
    return found;
}

}  // namespace

int32_t allocGlobal(size_t size, int32_t& descriptor) {
    const int32_t address = reserveRange(size);
    char name[kNameSize];
    nameOf(address, name);
    descriptor = address ? createBlock(size, name) : kNoDescriptor;
    if (descriptor != kNoDescriptor &&
        ::mmap(globalPlace(address), size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED,
               descriptor, 0) != MAP_FAILED) {
        return address;
    }
    closeDescriptor(descriptor);
    descriptor = kNoDescriptor;
    if (address) unlockGlobal(address, size);
    return 0;
}

void freeGlobal(int32_t address, size_t size, int32_t descriptor) {
    unlockGlobal(address, size);
    closeDescriptor(descriptor);
}

bool lockGlobal(int32_t address, size_t size) {
    const int32_t descriptor = address > 0 ? findInherited(address) : kNoDescriptor;
    if (descriptor == kNoDescriptor) return false;
    const bool seen = blockHolds(descriptor, size) &&
                      mapFree(address, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor);
    if (seen) ::close(descriptor);  // the mapping needs it no more
    return seen;
}

void unlockGlobal(int32_t address, size_t size) { ::munmap(globalPlace(address), size); }

}  // namespace vorn::platform
