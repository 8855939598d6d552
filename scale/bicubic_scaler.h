// Separable cubic filter: source lines are filtered to the destination's width, and destination
// lines from the last few of these rows.
#pragma once

#include "scale/bicubic_plan.h"
#include "scale/scaler.h"

namespace vorn {

class BicubicScaler final : public BandScaler {
  public:
    BicubicScaler() : BandScaler({2, 16000}) {}

  protected:
    bool prepare() override;
    void release() override;
    bool takeLines() override;
    void makeLine() override { makeLines(1); }
    int32_t makeLines(int32_t most) override;

  private:
    template <class Sample>
    void makeRows();
    template <class Sample>
    int32_t makeLinesOf(int32_t most);
    int32_t linesOfSameRows(int32_t most) const;
    int32_t* rowOf(int32_t line, const ChannelGroup& group) const;

    BicubicPlan samples_;
    BicubicPlan sourceLines_;
    Owned<int32_t> rows_;  // ring of sourceLines_.maxCount rows, each with all groups side by side
    Owned<const int32_t*> lineRows_;  // the rows of one destination line
    int32_t nextLine_ = 0;            // destination lines made
    int32_t linesTaken_ = 0;          // source lines taken
};

}  // namespace vorn
