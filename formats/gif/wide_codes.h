// The data of a frame whose codes begin with more than 8 bits. No palette needs so many, and giflib
// refuses them, but some programs write them.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "formats/common/files.h"

namespace gif {

class WideCodes {
  public:
    static constexpr int kMostBits = 11;  // a code has one more, and 12 are its most

    // The file stands behind the byte that tells the bits. It must live as long as this.
    WideCodes(formats::InputFile& file, int bits);

    // The next pixel's index. Throws kDamaged where there is none.
    uint8_t next();

    // Goes to the end of the data.
    void skipRest();

  private:
    static constexpr unsigned kMostCodes = 4096;
    static constexpr unsigned kNone = kMostCodes;

    void readString();
    unsigned readCode();
    void reset();

    formats::InputFile* file_;
    const unsigned bits_;
    const unsigned clear_;
    unsigned block_ = 0;  // bytes of it that are left
    bool ended_ = false;
    uint64_t read_ = 0;  // bits that are read and not yet used, the next ones lowest
    unsigned readBits_ = 0;

    unsigned size_ = 0;    // bits of a code
    unsigned next_ = 0;    // the code that is learnt next
    unsigned before_ = 0;  // the code before
    unsigned first_ = 0;   // the first pixel of its string
    std::array<uint16_t, kMostCodes> prefix_{};
    std::array<uint16_t, kMostCodes> last_{};
    std::vector<uint16_t> string_;  // pixels to hand out, the next one last
};

}  // namespace gif
