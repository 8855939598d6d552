#include "pixels/palette_cells.h"

#include <algorithm>

#include "pixels/channel_mover.h"
#include "pixels/line_view.h"
#include "pixels/samples.h"

namespace vorn {
namespace {

constexpr int32_t kIndices = 256;
constexpr int32_t kCellChannels = 4;
constexpr int32_t kCellsAtOnce = 512;

int32_t commonChannels(const LineTask& task) {
    return std::min(usedChannels(*task.palette), usedChannels(task.destination));
}

template <class Cell>
class CellTable {
  public:
    explicit CellTable(const LineTask& task) : task_(task), toLine_(equalSizes()) {
        ChannelMover fill(equalSizes());
        const int32_t channels = commonChannels(task);
        for (int32_t c = 0; c < channels; c++) {
            if (!isPresent(*task.palette, c) || !isPresent(task.destination, c)) continue;
            fill.add({task.palette->channelPlace[c], kSample, channelOf(entry_, c), kCell});
            toLine_.add({channelOf(made_, c), kCell,
                         lineStart(task.destination, c, task.destinationLine),
                         task.destination.pixelStep[c]});
        }
        fill.plan();
        fill.move(0, 0, std::min(task.palette->width, kIndices));
        toLine_.plan();
    }
    CellTable(const CellTable&) = delete;
    CellTable& operator=(const CellTable&) = delete;

    void lookUp() {
        const uint8_t* indices = lineStart(task_.source, 0, task_.sourceLine);
        const ptrdiff_t step = task_.source.pixelStep[0];
        for (int32_t first = 0; first < task_.destination.width; first += kCellsAtOnce) {
            const int32_t count = std::min(kCellsAtOnce, task_.destination.width - first);
            makeCells(indices + first * step, step, count);
            toLine_.move(0, first, count);
        }
    }

  private:
    // Indices side by side are fetched eight at a time.
    void makeCells(const uint8_t* indices, ptrdiff_t step, int32_t count) {
        int32_t x = 0;
        for (; step == 1 && x + 8 <= count; x += 8) {
            const auto eight = loadSample<uint64_t>(indices + x);
            for (int k = 0; k < 8; k++) made_[x + k] = entry_[(eight >> 8 * k) & 0xFF];
        }
        for (; x < count; x++) made_[x] = entry_[indices[x * step]];
    }

    static constexpr ptrdiff_t kCell = sizeof(Cell);
    static constexpr ptrdiff_t kSample = kCell / kCellChannels;

    static constexpr uint32_t equalSizes() { return sizeFlagsOf(kSample, kSample); }
    static uint8_t* channelOf(Cell* cells, int32_t c) {
        return reinterpret_cast<uint8_t*>(cells) + c * kSample;
    }

    const LineTask& task_;
    ChannelMover toLine_;        // from made_
    Cell entry_[kIndices] = {};  // zero where the palette has none
    Cell made_[kCellsAtOnce];
};

}  // namespace

bool suitsPaletteCells(const LineTask& task) {
    return task.source.bytesPerChannel != 2 && commonChannels(task) <= kCellChannels &&
           task.destination.width >= std::min(task.palette->width, kIndices);
}

void lookUpCells(const LineTask& task) {
    if (task.destination.bytesPerChannel == 2) {
        CellTable<uint64_t>(task).lookUp();
    } else {
        CellTable<uint32_t>(task).lookUp();
    }
}

}  // namespace vorn
