// The lines of a picture as a loader sends them, from the first to the last.
#pragma once

#include <vorn/library.h>

#include <memory>

#include "tools/connection.h"
#include "tools/conversion_plan.h"
#include "tools/target_size.h"

namespace vorn::tool {

class LineReader {
  public:
    // Of an image that has been opened and whose wishes are set. Asks the loader for its pixels.
    // All functions throw the loader's failure.
    LineReader(Connection& loader, const ConversionPlan& plan);

    // The loader's own, whatever the host wants.
    Size size() const { return {format_.width, format_.height}; }

    // Fills the buffer with the next lines, as many as it has.
    void read(const VORN_ChunkyBuffer& lines);

    // To be called before the last line is handed on: a loader may find damage behind it. Lines
    // that were not read are dropped.
    void finish();

  private:
    struct PaletteDeleter {
        void operator()(VORN_ChunkyBuffer* palette) const { FreeMemory(palette); }
    };

    void takeFormat();
    void preparePalette(const ConversionPlan& plan);

    Connection& loader_;
    VORN_DataFormat format_{};
    std::unique_ptr<VORN_ChunkyBuffer, PaletteDeleter> palette_;
};

}  // namespace vorn::tool
