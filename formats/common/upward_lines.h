// Lines of a file that begins with the last one, read from the first one on. So a picture that is
// stored upside down comes out upright, and nobody has to keep it whole to turn it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "formats/common/files.h"

namespace formats {

class UpwardLines {
  public:
    // The file's lines of `lineBytes` each begin at `place`.
    void start(InputFile& file, int64_t place, size_t lineBytes, size_t lines);

    // The next line, valid until the next call. Throws kDamaged where the file is too short.
    const uint8_t* next();

  private:
    InputFile* file_ = nullptr;
    int64_t place_ = 0;
    size_t lineBytes_ = 0;
    size_t left_ = 0;  // lines not read from the file
    size_t held_ = 0;  // lines of the block not handed out
    std::vector<uint8_t> block_;
};

}  // namespace formats
