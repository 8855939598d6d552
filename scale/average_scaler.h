// Area averaging: every destination sample is the mean of the source samples that it covers, each
// weighted by the area covered.
#pragma once

#include "scale/area_table.h"
#include "scale/average_kernels.h"
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
    void addLines(int32_t count);
    template <class Sample>
    void addLines(const ChannelGroup& group, int32_t first, int32_t count);
    template <class Sample>
    void finishLine();
    uint32_t* sumsOf(const ChannelGroup& group) const;

    AreaTable sampleAreas_;
    AreaTable lineAreas_;
    Owned<uint32_t> sums_;     // for each source sample of a line: see AverageKernels
    int32_t nextLine_ = 0;     // the destination line to make next
    int32_t currentLine_ = 0;  // the source line at the ring's read side
    int32_t linesAdded_ = 0;   // how many lines of the destination line's span are in the sums
};

}  // namespace vorn
