// Area averaging: every destination sample is the mean of the source samples that it covers, each
// weighted by the area covered.
#pragma once

#include "scale/piece_table.h"
#include "scale/scaler.h"

namespace vorn {

class AverageScaler final : public BandScaler {
  protected:
    bool prepare() override;
    void release() override;
    bool takeLines() override;
    void makeLine() override;

  private:
    template <class Sample>
    void addLine(uint32_t weight);
    template <class Sample>
    void finishLine();
    uint32_t* sumsOf(const ChannelGroup& group) const;

    PieceTable samplePieces_;
    PieceTable linePieces_;
    Owned<uint32_t> sums_;              // for each source sample of the line: see AverageKernels
    const Piece* nextPiece_ = nullptr;  // of linePieces_
    bool lineBegun_ = false;            // some pieces of the destination line are in sums_
    bool lineComplete_ = false;         // all of them are
};

}  // namespace vorn
