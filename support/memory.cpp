#include "support/memory.h"

#include <cstdlib>
#include <cstring>

#include "support/thread_state.h"

namespace vorn {
namespace {

// Allocations that tests let fail, see failAllocation.
struct Injection {
    unsigned countdown = 0;
    bool andAllAfter = false;
    bool failing = false;
    unsigned count = 0;
};

bool injectedFailure() {
    Injection& injection = threadState<Injection>();
    ++injection.count;
    if (injection.failing) return true;
    if (injection.countdown == 0 || --injection.countdown != 0) return false;
    injection.failing = injection.andAllAfter;
    return true;
}

}  // namespace

unsigned failAllocation(unsigned n, bool andAllAfter) {
    Injection& injection = threadState<Injection>();
    const unsigned count = injection.count;
    injection = {n, andAllAfter, false, 0};
    return count;
}

}  // namespace vorn

extern "C" {

void* AllocMemory(size_t size, uint32_t flags) {
    if (vorn::injectedFailure()) return nullptr;
    if (size == 0) size = 1;
    return (flags & MEMORY_Clear) ? std::calloc(1, size) : std::malloc(size);
}

void FreeMemory(void* block) { std::free(block); }

char* AllocString(const char* text) {
    const size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(AllocMemory(size, 0));
    if (copy) std::memcpy(copy, text, size);
    return copy;
}

void* AllocMemFunction(size_t size, uint32_t flags) { return AllocMemory(size, flags); }

void FreeMemFunction(void* block) { FreeMemory(block); }

}  // extern "C"
