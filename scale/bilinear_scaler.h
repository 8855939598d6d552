// Bilinear interpolation between the two nearest samples and lines. The first and last samples (and
// lines) of both images lie on each other.
#pragma once

#include "scale/scaler.h"

namespace vorn {

class BilinearScaler final : public BandScaler {
  protected:
    bool prepare() override;
    void release() override;
    bool takeLines() override;
    void makeLine() override;

  private:
    void keepCurrentLine();
    template <class Sample>
    void makeRows();
    template <class Sample>
    void makeLineOf();
    uint8_t* keptRow(int32_t line, const ChannelGroup& group) const;

    Owned<uint32_t> samplePositions_;  // fixed-point source position of each destination sample
    Owned<uint32_t> linePositions_;    // and line
    int32_t nextLine_ = 0;             // the destination line to make next
    int32_t currentLine_ = 0;          // the source line at the ring's read side
    Owned<uint8_t> rows_;              // two packed rows, made of an even and an odd source line
    int32_t keptLines_[2] = {-1, -1};  // of which lines
};

}  // namespace vorn
