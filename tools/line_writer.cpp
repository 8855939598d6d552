#include "tools/line_writer.h"

#include <algorithm>

namespace vorn::tool {

LineWriter::LineWriter(Connection& saver, const VORN_ChunkyBuffer& layout) : saver_(saver) {
    saver.beginLines();
    if (!VORN_L_StartWritingImage(saver.image())) {
        saver.fail();
    }
    state_.reset(VORN_L_ImageWriteChunkyBegin(saver.image(), &layout, &Interrupts::onAbort,
                                              saver.interrupts().userData(), nullptr));
    if (state_ == nullptr) {
        saver.fail();
    }
}

int32_t LineWriter::linesPerBlock() const {
    return std::max(VORN_L_WriteImageDataMaxSize(saver_.image()) / VORN_L_GetLineSize(state_.get()),
                    1);
}

void LineWriter::write(const VORN_ChunkyBuffer& lines) {
    if (VORN_L_ImageWriteLineChunky(state_.get(), &lines, next_) == 0) {
        saver_.fail();
    }
    next_ += lines.height;
}

// The end of the data is an abort, too: the saver has counted its lines.
void LineWriter::finish() {
    saver_.endLines();
    if (!VORN_L_SendCMDAbort(saver_.image()) || !VORN_L_WaitForAck(saver_.image())) {
        saver_.fail();
    }
}

}  // namespace vorn::tool
