#include "tests/injection/refusals.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

// The linker hands every call to the second of each pair (--wrap).
// All files have 64-bit sizes, so the C library knows two of the functions by their longer names.
int realMemfd(const char* name, unsigned flags) asm("__real_memfd_create");
int wrappedMemfd(const char* name, unsigned flags) asm("__wrap_memfd_create");
int realTruncate(int file, off_t size) asm("__real_ftruncate64");
int wrappedTruncate(int file, off_t size) asm("__wrap_ftruncate64");
void* realMap(void* address, size_t size, int access, int flags, int file, off_t offset) asm(
    "__real_mmap64");
void* wrappedMap(void* address, size_t size, int access, int flags, int file, off_t offset) asm(
    "__wrap_mmap64");

namespace {

struct Refusal {
    std::string call;
    int error = 0;
};

Refusal& refusal() {
    static Refusal theOne;
    return theOne;
}

bool isRefused(const char* call) {
    if (refusal().call != call) return false;
    errno = refusal().error;
    return true;
}

}  // namespace

void refuse(const std::string& call, int error) { refusal() = {call, error}; }

int wrappedMemfd(const char* name, unsigned flags) {
    return isRefused("memfd_create") ? -1 : realMemfd(name, flags);
}

int wrappedTruncate(int file, off_t size) {
    return isRefused("ftruncate") ? -1 : realTruncate(file, size);
}

void* wrappedMap(void* address, size_t size, int access, int flags, int file, off_t offset) {
    return isRefused("mmap") ? MAP_FAILED : realMap(address, size, access, flags, file, offset);
}
