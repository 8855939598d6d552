// Enumeration of one directory.
#pragma once

#include <cstdint>

namespace vorn::platform {

class DirectoryListing {
  public:
    DirectoryListing() = default;
    ~DirectoryListing();
    DirectoryListing(const DirectoryListing&) = delete;
    DirectoryListing& operator=(const DirectoryListing&) = delete;

    // False with the system's error number.
    bool open(const char* path, int32_t& error);

    // The next entry's name (valid until the next call), "." and ".." included; null at the end.
    const char* next(bool& isDirectory);

  private:
    void* stream_ = nullptr;
};

}  // namespace vorn::platform
