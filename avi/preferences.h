// What the AVI savers keep as their parameters: how to compress, and the frame rate, in one string.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn {

inline constexpr int32_t kDefaultFrameRate = 15;

// Most bytes of a preference string, its NUL included.
inline constexpr size_t kMostPreferenceBytes = 4096;

inline constexpr int32_t kPreferenceCheck = 62767;

// The compression options of an AVI stream. The two blocks belong to the record, which must be
// cleared before it is used first; a block may be absent while its count is not 0.
struct AviOptions {
    uint32_t fccType;
    uint32_t fccHandler;
    uint32_t dwKeyFrameEvery;
    uint32_t dwQuality;
    uint32_t dwBytesPerSecond;
    uint32_t dwFlags;
    uint8_t* lpFormat;
    uint32_t cbFormat;
    uint8_t* lpParms;
    uint32_t cbParms;
    uint32_t dwInterleaveEvery;
};

// Frees the blocks and clears their pointers.
void releaseAviBlocks(AviOptions& options);

// Fills the record, whose former blocks are released, and the frame rate from a text, which may be
// null and may hold anything. True when the text's header is valid; a block that the text doesn't
// have is then absent. False when the defaults were set, for the reason that is logged.
bool readAviPreferences(const char* text, AviOptions& options, int32_t& frameRate);

// The string, in a buffer of the whole process that the next call overwrites: one thread at a time.
// Null when it doesn't fit. A block that the record doesn't have is written with the count 0.
const char* writeAviPreferences(const AviOptions& options, int32_t frameRate);

// Reads a number of at most 32 bits, signed or not, as "%d" (base 10) and "%x" (base 16) of scanf
// do, and moves behind it. False when none stands there.
bool readNumber(const char*& text, int base, int64_t& number);

}  // namespace vorn
