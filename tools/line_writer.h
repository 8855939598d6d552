// The lines of a picture on their way to a saver, from the first to the last.
#pragma once

#include <vorn/library.h>

#include <memory>

#include "tools/connection.h"

namespace vorn::tool {

class LineWriter {
  public:
    // For an image that has been opened and whose tags are set. Asks the saver to take pixels. The
    // lines will have the width, the channels and the samples of `layout`. All functions throw the
    // saver's failure; the file is then as it was before.
    LineWriter(Connection& saver, const VORN_ChunkyBuffer& layout);

    // How many lines go at a time.
    int32_t linesPerBlock() const;

    // Takes the next lines, at most so many.
    void write(const VORN_ChunkyBuffer& lines);

    // All lines have been written.
    void finish();

  private:
    struct StateDeleter {
        void operator()(VORN_WriteState* state) const { VORN_L_ImageWriteChunkyEnd(state); }
    };

    Connection& saver_;
    std::unique_ptr<VORN_WriteState, StateDeleter> state_;
    int32_t next_ = 0;
};

}  // namespace vorn::tool
