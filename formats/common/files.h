// The file that a loader reads and the file that a saver writes.
#pragma once

#include <vorn/module.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace formats {

struct FileCloser {
    void operator()(VORN_File* file) const { BClose(file); }
};
using FileHandle = std::unique_ptr<VORN_File, FileCloser>;

class InputFile {
  public:
    InputFile() = default;
    // Throws kCannotOpen.
    explicit InputFile(const std::string& path);

    // Fewer bytes than asked for mean the end of the file. A system error is thrown.
    size_t read(void* destination, size_t count);

    // Throws kDamaged when the file ends before `count` bytes.
    void readExactly(void* destination, size_t count);

    // For formats whose parts refer to each other by their places in the file. Throws kDamaged for
    // places that it doesn't have.
    void seek(int64_t position);
    int64_t size() const;

    // -1 at the end of the file.
    int nextByte() {
        if (start_ == end_ && !fill()) return -1;
        return buffer_[start_++];
    }

  private:
    bool fill();

    FileHandle file_;
    std::vector<uint8_t> buffer_;  // for nextByte; the bytes [start_, end_) come next
    size_t start_ = 0;
    size_t end_ = 0;
};

// Nothing reaches the target before commit(): a file that is dropped earlier leaves it as it was.
class OutputFile {
  public:
    OutputFile() = default;
    // Throws kCannotOpen.
    explicit OutputFile(const std::string& path);

    void write(const void* source, size_t count);
    void seek(int64_t position);
    void commit();

  private:
    FileHandle file_;
};

// The file name in a host's message. Throws kNoFileName.
std::string fileName(const VORN_TagItem* message);

// What stands behind the last dot of the name, in lower case: "ppm" for "photos/Cat.PPM".
std::string fileEnding(const std::string& name);

}  // namespace formats
