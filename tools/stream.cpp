#include "tools/stream.h"

#include <vorn/scaler.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "tools/failure.h"
#include "tools/line_reader.h"
#include "tools/line_writer.h"
#include "tools/pixel_layout.h"

namespace vorn::tool {

namespace {

constexpr int32_t kBandBytes = 65536;  // of lines that a scaler gets at a time

struct ScalerDeleter {
    void operator()(VORN_Scaler* scaler) const { VORN_S_FreeScaler(scaler); }
};
using OwnedScaler = std::unique_ptr<VORN_Scaler, ScalerDeleter>;

// Lines that have come and not gone.
class Strip {
  public:
    Strip(const StreamPlan& plan, int32_t width, int32_t lines)
        : bytes_(static_cast<size_t>(bytesOf(plan.pixels, {width, lines}))),
          out_(pixelsAt(bytes_.data(), plan.pixels, {width, lines})) {
        prefill(bytes_.data(), bytes_.size(), plan.pixels);
        in_ = loadedPart(out_, plan.pixels);
        if (plan.mirrored) {
            in_ = mirrored(in_);
        }
    }

    // The memory as it is filled, and as it is handed on.
    VORN_ChunkyBuffer& in() { return in_; }
    VORN_ChunkyBuffer& out() { return out_; }

  private:
    std::vector<uint8_t> bytes_;
    VORN_ChunkyBuffer out_;
    VORN_ChunkyBuffer in_;
};

class Stream {
  public:
    Stream(Connection& loader, Connection& saver, const StreamPlan& plan, ProgressBar& progress)
        : plan_(plan),
          progress_(progress),
          saver_(saver),
          from_(loader, plan.pixels),
          to_(saver, pixelLayout(plan.pixels, plan.size)) {}

    void run() {
        if (from_.size() == plan_.size) {
            copy();
        } else {
            scale();
        }
        to_.finish();
    }

  private:
    // A bar moves in small steps.
    int32_t stripLines() const {
        const int32_t most = progress_.isShown()
                                 ? std::max(plan_.size.height / (2 * ProgressBar::kTicks), 1)
                                 : plan_.size.height;
        return std::min(most, to_.linesPerBlock());
    }

    void copy() {
        Strip strip(plan_, plan_.size.width, stripLines());
        while (done_ < plan_.size.height) {
            const int32_t lines = std::min(strip.out().height, plan_.size.height - done_);
            strip.in().height = lines;
            from_.read(strip.in());
            write(strip, lines);
        }
    }

    void scale() {
        const Size own = from_.size();
        const int32_t lineBytes = static_cast<int32_t>(bytesOf(plan_.pixels, {own.width, 1}));
        StreamPlan unturned{plan_.pixels, own, false, {}};
        Strip band(unturned, own.width, std::clamp(kBandBytes / lineBytes, 1, own.height));
        Strip strip(plan_, plan_.size.width, stripLines());
        const OwnedScaler scaler(VORN_S_AllocScaler(scalerName()));
        if (VORN_S_InitScale(scaler.get(), own.height, plan_.size.height, &band.in(), &strip.in(),
                             nullptr, nullptr) != VORN_S_READY) {
            throw numberedFailure(saver_.file(), kErrorMemory, 0);
        }
        pump(scaler.get(), band, strip);
    }

    void pump(VORN_Scaler* scaler, Strip& band, Strip& strip) {
        int32_t left = from_.size().height;
        for (;;) {
            switch (VORN_S_SendData(scaler)) {
                case VORN_S_FILL_SOURCE:
                    band.in().height = std::min(band.in().height, left);
                    from_.read(band.in());
                    left -= band.in().height;
                    break;
                case VORN_S_TAKE_DESTINATION:
                    write(strip, std::min(strip.in().height, plan_.size.height - done_));
                    break;
                case VORN_S_FINISHED:
                    return;
                default:
                    throw numberedFailure(saver_.file(), kErrorMemory, 0);
            }
        }
    }

    // The saver gets its last lines, after which it finishes the file, only when the loader has
    // found nothing wrong with its own.
    void write(Strip& strip, int32_t lines) {
        done_ += lines;
        if (done_ == plan_.size.height) {
            from_.finish();
        }
        strip.out().height = lines;
        to_.write(strip.out());
        progress_.tick(
            static_cast<int32_t>(int64_t{ProgressBar::kTicks} * done_ / plan_.size.height));
    }

    const char* scalerName() const {
        if (!plan_.scaler.empty()) {
            return plan_.scaler.c_str();
        }
        const Size own = from_.size();
        return plan_.pixels.palette ? "fastest"  // indices can be copied, not mixed
                                    : VORN_S_ChooseScaler(own.width, own.height, plan_.size.width,
                                                          plan_.size.height);
    }

    const StreamPlan& plan_;
    ProgressBar& progress_;
    const Connection& saver_;
    LineReader from_;
    LineWriter to_;
    int32_t done_ = 0;  // lines written
};

}  // namespace

void streamPicture(Connection& loader,
                   Connection& saver,
                   const StreamPlan& plan,
                   ProgressBar& progress) {
    progress.beginStage(0, 1);
    Stream(loader, saver, plan, progress).run();
}

}  // namespace vorn::tool
