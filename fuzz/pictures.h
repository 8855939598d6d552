// What the targets for picture files share.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "formats/common/failure.h"
#include "formats/common/loader.h"

// A file in memory.
class MemoryFile {
  public:
    MemoryFile(const uint8_t* data, size_t size) : descriptor_(::memfd_create("picture", 0)) {
        if (::write(descriptor_, data, size) != static_cast<ssize_t>(size)) ::abort();
    }
    ~MemoryFile() { ::close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

// Whatever the file holds: a description that makes sense and lines, or the module's own failure.
template <class Loader>
void loadPicture(const uint8_t* data, size_t size) {
    constexpr int32_t kMostLines = 200;
    const MemoryFile file(data, size);
    try {
        Loader loader;
        const formats::Description image = loader.open(formats::InputFile(file.path()));
        if (image.width < 1 || image.height < 1 || image.channels < 1) ::abort();
        std::vector<uint8_t> line(static_cast<size_t>(image.lineBytes()));
        for (int32_t y = 0; y < std::min(image.height, kMostLines); ++y)
            loader.readLine(line.data());
    } catch (const formats::Failure&) {
    }
}
