// What reading and writing have in common: the application's callbacks, its progress meter, and the
// way out of a transfer that fails.
#pragma once

#include <vorn/types.h>

namespace vorn {

struct TransferOptions {
    VORN_MeterCallback meter = nullptr;
    VORN_Word meterData = 0;
    VORN_AbortCallback abort = nullptr;
    VORN_Word abortData = 0;
    int32_t ticks = 1;  // meter calls in an image
};

// From a user tag list, or none.
TransferOptions transferOptions(const VORN_Word* tags);

// The calling thread's flag: the application's abort callback has answered that it wants no more.
bool& transferAborted();

// Asks the abort callback, if there is one. A nonzero answer is true and sets the flag.
bool askAbort(VORN_Image& image, VORN_AbortCallback abort, VORN_Word abortData);

// Lines that are moved at a time, so that the meter moves evenly.
int32_t linesPerStep(const TransferOptions& options, int32_t height);

// Calls the meter about `ticks` times while `lines` lines go by.
class Meter {
  public:
    Meter(VORN_Image& image, const TransferOptions& options, int32_t lines)
        : image_(image), options_(options), lines_(lines) {}

    // With `mayAbort` the abort callback is asked after each call of the meter.
    void advance(int32_t lines, bool mayAbort);

  private:
    VORN_Image& image_;
    const TransferOptions& options_;
    int64_t lines_;
    int64_t sum_ = 0;
    int32_t count_ = 0;
};

// Makes the buffer's size the handle's output size. True when it differs from the given size, which
// is in the module's terms.
bool noteBufferSize(VORN_Image& image,
                    const VORN_ChunkyBuffer& buffer,
                    int32_t width,
                    int32_t height);

// The application's memory as the module sees it.
VORN_ChunkyBuffer correctedBuffer(const VORN_Image& image, const VORN_ChunkyBuffer& buffer);

// Goes down to the lines behind the next `lines` ones.
void advanceLines(VORN_ChunkyBuffer& buffer, int32_t lines);

// Ends a transfer that has failed: gives a held message back and brings the module back to its
// command loop. What went wrong first stays the handle's error, 27 after an abort. Always false.
bool abandonTransfer(VORN_Image& image);

}  // namespace vorn
