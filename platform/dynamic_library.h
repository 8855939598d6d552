// A dynamic library that is loaded while the object lives.
#pragma once

namespace vorn::platform {

class DynamicLibrary {
  public:
    DynamicLibrary() = default;
    explicit DynamicLibrary(const char* path);
    ~DynamicLibrary();
    DynamicLibrary(DynamicLibrary&& other) noexcept : handle_(other.handle_) {
        other.handle_ = nullptr;
    }
    DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;

    explicit operator bool() const { return handle_ != nullptr; }

    // The address of an exported function, or null.
    void* symbol(const char* name) const;

  private:
    void* handle_ = nullptr;
};

}  // namespace vorn::platform
