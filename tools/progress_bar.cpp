#include "tools/progress_bar.h"

#include <algorithm>
#include <cstdio>

#include "tools/printable.h"
#include "tools/terminal.h"

namespace vorn::tool {

namespace {

constexpr int32_t kBarColumns = 40;
constexpr int32_t kOtherColumns = 10;  // blanks round the bar, and the percentage

std::string repeated(const char* text, int32_t times) {
    std::string all;
    for (int32_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

}  // namespace

ProgressBar::ProgressBar(std::string title, bool quiet)
    : title_(printable(title)), shown_(!quiet && errorIsTerminal()) {}

void ProgressBar::beginStage(int32_t stage, int32_t stages) {
    stage_ = stage;
    stages_ = stages;
    tick(0);
}

void ProgressBar::tick(int32_t ticksOfStage) {
    const int32_t done = stage_ * kTicks + std::clamp(ticksOfStage, 0, kTicks);
    const int32_t percent = 100 * done / (stages_ * kTicks);
    if (shown_ && percent != drawn_) {
        draw(percent);
    }
}

void ProgressBar::draw(int32_t percent) {
    const int32_t room = errorTerminalWidth() - kOtherColumns;
    const auto titleColumns = static_cast<int32_t>(columns(title_));
    const bool withTitle = titleColumns + 10 <= room;
    const int32_t width = std::clamp(room - (withTitle ? titleColumns : 0), 0, kBarColumns);
    const int32_t full = width * percent / 100;
    const std::string bar = repeated("█", full) + repeated("░", width - full);
    std::fprintf(stderr, "\r%s  %s %3d %%\x1b[K", withTitle ? title_.c_str() : "", bar.c_str(),
                 percent);
    std::fflush(stderr);
    drawn_ = percent;
}

void ProgressBar::clear() {
    if (drawn_ >= 0) {
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
        drawn_ = -1;
    }
}

}  // namespace vorn::tool
