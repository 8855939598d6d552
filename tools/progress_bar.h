// A bar on the terminal that standard error goes to; nothing where there is none.
#pragma once

#include <cstdint>
#include <string>

namespace vorn::tool {

class ProgressBar {
  public:
    // Calls of a meter callback that make a whole transfer.
    static constexpr int32_t kTicks = 64;

    ProgressBar(std::string title, bool quiet);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    bool isShown() const { return shown_; }

    // Stages share the bar evenly.
    void beginStage(int32_t stage, int32_t stages);
    void tick(int32_t ticksOfStage);

    // Takes the bar away, so that other lines can be written.
    void clear();

  private:
    void draw(int32_t percent);

    std::string title_;
    bool shown_;
    int32_t stage_ = 0;
    int32_t stages_ = 1;
    int32_t drawn_ = -1;  // percent; -1: nothing on the line
};

}  // namespace vorn::tool
