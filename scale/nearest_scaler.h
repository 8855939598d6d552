// Nearest sample: every destination sample is a copy of one source sample.
#pragma once

#include "scale/scaler.h"

namespace vorn {

class NearestScaler final : public BandScaler {
  protected:
    bool prepare() override;
    void release() override;
    bool takeLines() override;
    void makeLine() override;

  private:
    template <class Sample>
    void copyGroup(const ChannelGroup& group);
    template <class Sample>
    void copyPacked(const ChannelGroup& group);

    Owned<uint16_t> sampleSteps_;  // samples to move on before each destination sample
    Owned<uint16_t> lineSteps_;    // lines to move on before each destination line
    int32_t nextLine_ = 0;         // the entry of lineSteps_ to take next
    int32_t pendingLines_ = 0;     // lines still to move on for the current destination line
    Owned<uint8_t> repeated_;      // when enlarging: the packed lines made of the current line
};

}  // namespace vorn
