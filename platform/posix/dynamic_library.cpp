#include "platform/dynamic_library.h"

#include <dlfcn.h>

#include <utility>

namespace vorn::platform {

DynamicLibrary::DynamicLibrary(const char* path) : handle_(::dlopen(path, RTLD_NOW | RTLD_LOCAL)) {}

DynamicLibrary::~DynamicLibrary() {
    if (handle_) ::dlclose(handle_);
}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
}

void* DynamicLibrary::symbol(const char* name) const {
    return handle_ ? ::dlsym(handle_, name) : nullptr;
}

}  // namespace vorn::platform
