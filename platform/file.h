// Files as the system has them: unbuffered, 64-bit positions, errors as system error numbers (0:
// none).
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/path.h"

namespace vorn::platform {

class File {
  public:
    File() = default;
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int32_t openForReading(const char* path);

    // A file that takes the place of `path` when it is committed and leaves no trace when it is
    // not. It has no name where the file system can do that, else a hidden one in the same
    // directory. A program that is killed while its file has such a name leaves it to the next one
    // that replaces a file there, which removes it. A target that exists and is not a regular file,
    // or a file that has no name any more (reached through another one's descriptors), is written
    // directly.
    int32_t openForReplacing(const char* path);

    // Moves up to `count` bytes, going on after interruptions and short writes. `moved` counts
    // them.
    int32_t read(void* buffer, size_t count, size_t& moved);
    int32_t write(const void* buffer, size_t count, size_t& moved);
    int32_t seek(int64_t position);
    int32_t size(int64_t& bytes) const;
    int32_t flush();  // to the disk, so that not even the system's end can lose the bytes
    int32_t commit();

  private:
    int32_t nameBeside(char (&out)[kMaxPath], unsigned number) const;
    void removeLeftOvers() const;
    int32_t takeName(bool (File::*make)(const char* name));
    bool createAs(const char* name);
    bool linkAs(const char* name);

    int descriptor_ = -1;
    char* target_ = nullptr;     // set while a replacement is not committed
    char* temporary_ = nullptr;  // its name, when it needs one
};

}  // namespace vorn::platform
