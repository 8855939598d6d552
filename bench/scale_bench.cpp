// Scaling speed in megapixels of output a second, one thread, side by side with other libraries.
//
//     scale_bench [SECONDS_PER_CELL [ROW]]
//
// The contestants of a row take turns, and the best turn counts, in processor time. All of them
// read and write whole pictures in memory.
#include <vorn/scaler.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>

#include "scale_peers.h"

namespace vorn_bench {
namespace {

struct Row {
    const char* name;
    const char* scaler;
    Kind kind;
    int32_t fromWidth, fromLines, toWidth, toLines, channels, bytes;
};

constexpr Row kRows[] = {
    {"area, RGB8, 4000x3000 to 1000x750", "bestdown", Kind::Area, 4000, 3000, 1000, 750, 3, 1},
    {"area, RGB8, 4000x3000 to 1500x1125", "bestdown", Kind::Area, 4000, 3000, 1500, 1125, 3, 1},
    {"cubic, RGB8, 1000x750 to 4000x3000", "bestup", Kind::Cubic, 1000, 750, 4000, 3000, 3, 1},
    {"cubic, RGB8, 1000x750 to 1600x1200", "bestup", Kind::Cubic, 1000, 750, 1600, 1200, 3, 1},
    {"linear, RGB8, 1000x750 to 4000x3000", "blscale", Kind::Linear, 1000, 750, 4000, 3000, 3, 1},
    {"nearest, RGB8, 1000x750 to 4000x3000", "fastest", Kind::Nearest, 1000, 750, 4000, 3000, 3, 1},
    {"nearest, RGB8, 4000x3000 to 1000x750", "fastest", Kind::Nearest, 4000, 3000, 1000, 750, 3, 1},
    {"area, plane of 16 bits, 4000x3000 to 1000x750", "bestdown", Kind::Area, 4000, 3000, 1000, 750,
     1, 2},
    {"cubic, plane of 16 bits, 1000x750 to 4000x3000", "bestup", Kind::Cubic, 1000, 750, 4000, 3000,
     1, 2},
};

VORN_ChunkyBuffer record(const Pixels& pixels) {
    VORN_ChunkyBuffer buffer{};
    buffer.width = pixels.width;
    buffer.height = pixels.lines;
    buffer.channels = pixels.channels;
    buffer.bytesPerChannel = pixels.bytes;
    for (int32_t c = 0; c < pixels.channels; ++c) {
        buffer.pixelStep[c] = pixels.channels * pixels.bytes;
        buffer.lineStep[c] = static_cast<int32_t>(pixels.lineBytes());
        buffer.channelPlace[c] = pixels.data() + c * pixels.bytes;
    }
    return buffer;
}

void scaleWhole(const char* name, const Pixels& from, Pixels& to) {
    const VORN_ChunkyBuffer source = record(from), target = record(to);
    VORN_Scaler* scaler = VORN_S_AllocScaler(name);
    int32_t code =
        VORN_S_InitScale(scaler, from.lines, to.lines, &source, &target, nullptr, nullptr);
    while (code > 0 && code != VORN_S_FINISHED) code = VORN_S_SendData(scaler);
    if (code != VORN_S_FINISHED) std::abort();
    VORN_S_FreeScaler(scaler);
}

double seconds(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void measure(const Row& row, double secondsPerCell) {
    Pixels from(row.fromWidth, row.fromLines, row.channels, row.bytes);
    Pixels to(row.toWidth, row.toLines, row.channels, row.bytes);
    std::minstd_rand random(1);
    for (size_t i = 0; i < from.size(); ++i) from.data()[i] = static_cast<uint8_t>(random() >> 8);
    std::vector<Peer> contestants = peers(row.kind, from, to);
    contestants.insert(contestants.begin(), {"vorn", [&] { scaleWhole(row.scaler, from, to); }});
    std::vector<double> best(contestants.size(), 1e9);
    const double end = secondsPerCell * static_cast<double>(contestants.size());
    for (double spent = 0; spent < end;) {
        for (size_t i = 0; i < contestants.size(); ++i) {
            const double took = seconds(contestants[i].scale);
            best[i] = std::min(best[i], took);
            spent += took;
        }
    }
    std::printf("%s\n", row.name);
    const double pixels = 1e-6 * row.toWidth * row.toLines;
    for (size_t i = 0; i < contestants.size(); ++i) {
        std::printf("    %-16s %8.1f", contestants[i].name.c_str(), pixels / best[i]);
        if (i > 0) std::printf("   vorn is at %.2f", best[i] / best[0]);
        std::printf("\n");
    }
    std::fflush(stdout);
}

}  // namespace
}  // namespace vorn_bench

int main(int argc, char** argv) {
    const double secondsPerCell = argc > 1 ? std::atof(argv[1]) : 1.0;
    const int only = argc > 2 ? std::atoi(argv[2]) : -1;
    int number = 0;
    for (const vorn_bench::Row& row : vorn_bench::kRows) {
        if (only < 0 || only == number) vorn_bench::measure(row, secondsPerCell);
        ++number;
    }
    return 0;
}
