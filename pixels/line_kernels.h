// The inner loops of every transfer, as tables of function pointers: one table per family, filled
// with the plain loops. A faster version of a loop takes the plain one's place in such a table;
// nothing else has to know.
//
// A kernel reads and writes nothing outside the samples of its line, and writes nothing between
// them. Source and destination must not overlap.
//
// Size flags, the first index of every table: bit 0 is set when the destination has 16-bit samples,
// bit 1 when the source has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn {

inline constexpr int kSizeFlags = 4;

constexpr uint32_t sizeFlagsOf(int32_t sourceBytes, int32_t destinationBytes) {
    return (destinationBytes == 2 ? 1u : 0u) | (sourceBytes == 2 ? 2u : 0u);
}

// Copies `count` samples, changing their size. Steps are bytes.
using CopyKernel = void (*)(const uint8_t* source,
                            ptrdiff_t sourceStep,
                            uint8_t* destination,
                            ptrdiff_t destinationStep,
                            int32_t count);

// Steps of 1 to 4 samples are constants inside their loop; entry 0 takes any step.
inline constexpr int kStepForms = 5;

struct CopyKernels {
    CopyKernel form[kSizeFlags][kStepForms][kStepForms];
};

// Runs of sixteen destination bytes, put together from up to four runs of sixteen source bytes.
// Copying samples, whatever their layouts and sizes, is nothing but that: 16 to 8 bits takes every
// second byte, 8 to 16 bits takes every byte twice.
struct ByteMove {
    static constexpr int kBytes = 16;
    static constexpr int kMost = 4;
    static constexpr uint8_t kNone = 0x80;  // this input doesn't give that byte

    // Runs of one side: where they lie for the first pixels, and the bytes from pixel to pixel.
    struct Runs {
        ptrdiff_t at[kMost];
        ptrdiff_t step[kMost];
    };

    int32_t pixels;  // that the outputs make
    Runs from, to;
    uint8_t source[kMost][kMost][kBytes];  // by output and input: the place that a byte comes from
    uint32_t written;  // by one output: a bit for each byte that belongs to these pixels
};

// The lines of a move: where its offsets count from, and which pixel is the first on either side.
struct MovePlace {
    const uint8_t* source;
    uint8_t* destination;
    int32_t sourceFirst, destinationFirst;
};

// Makes the pixels from the first one on. The last move starts `lastStart` pixels behind it.
using MoveKernel = void (*)(const ByteMove& move, const MovePlace& place, int32_t lastStart);

// By the numbers of inputs and outputs. Null: there is none, and the samples are copied one by one.
struct MoveKernels {
    MoveKernel whole[ByteMove::kMost + 1][ByteMove::kMost + 1];  // may write all of the outputs
    MoveKernel gaps[ByteMove::kMost + 1];  // with one output; writes only those of `written`
};

// Converts `count` pixels whose channels lie side by side (step = sample size). Channels that the
// conversion doesn't have are not looked at.
using ConvertKernel = void (*)(const uint8_t* const source[3],
                               uint8_t* const destination[3],
                               int32_t count);

struct ConvertKernels {
    ConvertKernel rgbToGray[kSizeFlags];
    ConvertKernel yuv601ToGray[kSizeFlags];
    ConvertKernel grayToYuv601[kSizeFlags];
    ConvertKernel yuv601ToRgb[kSizeFlags];
    ConvertKernel rgbToYuv601[kSizeFlags];
};

// Looks up `count` indices in a table whose entries lie side by side; beyond it there are zeros.
using LookupKernel = void (*)(const uint8_t* indices,
                              ptrdiff_t indexStep,
                              const uint8_t* table,
                              int32_t entries,
                              uint8_t* destination,
                              ptrdiff_t destinationStep,
                              int32_t count);

struct LookupKernels {
    LookupKernel form[kSizeFlags];
};

// The tables that transfers use.
const CopyKernels& copyKernels();
const MoveKernels& moveKernels();
const ConvertKernels& convertKernels();
const LookupKernels& lookupKernels();

// The copy loop for these steps.
CopyKernel copyKernelFor(uint32_t sizeFlags, ptrdiff_t sourceStep, ptrdiff_t destinationStep);

}  // namespace vorn
