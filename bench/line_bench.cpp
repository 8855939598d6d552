// Copying and converting lines, in nanoseconds a pixel, one thread, side by side with other
// libraries.
//
//     line_bench [ROUNDS [WIDTH]]
//
// First single lines in cache, then whole pictures of 6000x4000 line by line against memcpy of as
// many bytes. The contestants of a row take turns, and the best turn counts, in processor time.
#include <vorn/library.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <random>

#include "line_peers.h"
#include "support/cpu.h"

namespace vorn_bench {
namespace {

// How a side's pixels lie.
enum class Pixels { Rgb, Bgr, Rgba, Planes, Rgb16, Single };

struct Row {
    const char* name;
    Work work;
    Pixels from, to;
    uint32_t code;  // of the conversion
    bool arithmetic;
};

constexpr Row kRows[] = {
    {"RGB to RGB", Work::Straight, Pixels::Rgb, Pixels::Rgb, 0, false},
    {"RGB to RGBA", Work::AddAlpha, Pixels::Rgb, Pixels::Rgba, 0, false},
    {"RGB to BGR", Work::Swap, Pixels::Rgb, Pixels::Bgr, 0, false},
    {"RGB to planes", Work::Split, Pixels::Rgb, Pixels::Planes, 0, false},
    {"planes to RGB", Work::Merge, Pixels::Planes, Pixels::Rgb, 0, false},
    {"RGB, 8 to 16 bits", Work::Widen, Pixels::Rgb, Pixels::Rgb16, 0, false},
    {"RGB, 16 to 8 bits", Work::Narrow, Pixels::Rgb16, Pixels::Rgb, 0, false},
    {"RGB to grey", Work::Gray, Pixels::Rgb, Pixels::Single, 1, true},
    {"RGB to YUV601, planes", Work::ToYuv, Pixels::Planes, Pixels::Planes, 6, true},
    {"YUV601 to RGB, planes", Work::FromYuv, Pixels::Planes, Pixels::Planes, 5, true},
    {"RGB to YUV601 planes", Work::RgbToYuv, Pixels::Rgb, Pixels::Planes, 6, true},
    {"YUV601 planes to RGB", Work::YuvToRgb, Pixels::Planes, Pixels::Rgb, 5, true},
    {"palette to RGB", Work::Palette, Pixels::Single, Pixels::Rgb, 7, true},
};

int32_t bytesPerPixel(Pixels pixels) {
    return pixels == Pixels::Rgb16    ? 6
           : pixels == Pixels::Rgba   ? 4
           : pixels == Pixels::Single ? 1
                                      : 3;
}

VORN_ChunkyBuffer record(Pixels pixels,
                         const uint8_t* data,
                         const LineMemory& memory,
                         int32_t lineStep) {
    VORN_ChunkyBuffer buffer{};
    buffer.width = memory.width;
    buffer.channels = pixels == Pixels::Single ? 1 : 3;
    buffer.bytesPerChannel = pixels == Pixels::Rgb16 ? 2 : 1;
    for (int32_t c = 0; c < buffer.channels; ++c) {
        const bool planes = pixels == Pixels::Planes;
        buffer.pixelStep[c] = planes ? 1 : bytesPerPixel(pixels);
        buffer.lineStep[c] = lineStep;
        buffer.channelPlace[c] =
            const_cast<uint8_t*>(data) + (planes                  ? c * memory.plane()
                                          : pixels == Pixels::Bgr ? 2 - c
                                                                  : c * buffer.bytesPerChannel);
    }
    return buffer;
}

std::shared_ptr<uint8_t> allocate(size_t bytes) {
    std::shared_ptr<uint8_t> memory(
        static_cast<uint8_t*>(std::aligned_alloc(64, (bytes / 64 + 1) * 64)), std::free);
    std::minstd_rand random(1);
    for (size_t i = 0; i < bytes; ++i) memory.get()[i] = static_cast<uint8_t>(random() >> 8);
    return memory;
}

double seconds(const std::function<void()>& work, int repeats) {
    const std::clock_t start = std::clock();
    for (int i = 0; i < repeats; ++i) work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / repeats;
}

struct Contestant {
    LinePeer peer;
    bool plain = false;
    bool exact = true;
    double best = 1e9;
};

void compete(std::vector<Contestant>& contestants, int rounds, int repeats) {
    for (int round = 0; round < rounds; ++round) {
        for (Contestant& c : contestants) {
            vorn::limitKernels(c.plain ? vorn::KernelLevel::Plain : vorn::KernelLevel::Newest);
            c.best = std::min(c.best, seconds(c.peer.work, repeats));
        }
    }
    vorn::limitKernels(vorn::KernelLevel::Newest);
}

void measureLine(const Row& row, int rounds, int32_t width) {
    const size_t size = static_cast<size_t>(width) * 8 + 256;
    const auto from = allocate(size), to = allocate(size), palette = allocate(768);
    const LineMemory memory{from.get(), to.get(), palette.get(), width};
    const VORN_ChunkyBuffer source = record(row.from, memory.from, memory, 0);
    const VORN_ChunkyBuffer target = record(row.to, memory.to, memory, 0);
    VORN_ChunkyBuffer colors{};
    colors.width = 256;
    colors.channels = 3;
    colors.bytesPerChannel = 1;
    for (int c = 0; c < 3; ++c) {
        colors.pixelStep[c] = 1;
        colors.channelPlace[c] = palette.get() + 256 * c;
    }
    const auto copy = [&] {
        VORN_L_CopyCBtoCB(&source, &target, 0, 0, row.code, row.code == 7 ? &colors : nullptr);
    };
    std::vector<Contestant> contestants = {{{"vorn", copy}}, {{"plain", copy}, true}};
    std::memset(to.get(), 255, size);
    copy();
    const std::vector<uint8_t> ours(to.get(), to.get() + size);
    for (const LinePeer& peer : linePeers(row.work, memory)) {
        std::memset(to.get(), 255, size);
        peer.work();
        const bool exact = std::equal(ours.begin(), ours.end(), to.get());
        contestants.push_back({peer, false, exact});
    }
    compete(contestants, rounds, 2000);
    const double pixel = 1e9 / width;
    const double own = contestants[0].best;
    std::printf("%-24s vorn %.3f  plain %.3f", row.name, own * pixel, contestants[1].best * pixel);
    for (size_t i = 2; i < contestants.size(); ++i) {
        const Contestant& c = contestants[i];
        std::printf("  %s %.3f (%.2f%s)", c.peer.name.c_str(), c.best * pixel, own / c.best,
                    c.exact ? "" : ", inexact");
    }
    std::printf("\n");
    std::fflush(stdout);
}

void measurePicture(const Row& row, int rounds) {
    constexpr int32_t kWidth = 6000, kLines = 4000;
    LineMemory memory{nullptr, nullptr, nullptr, kWidth};
    const auto lineBytes = [&](Pixels pixels) {
        return pixels == Pixels::Planes ? 3 * memory.plane() : bytesPerPixel(pixels) * kWidth;
    };
    const auto in = static_cast<size_t>(lineBytes(row.from)),
               out = static_cast<size_t>(lineBytes(row.to));
    // All work in the same memory: how it lies in the machine's makes a difference.
    const size_t mean = (in + out) / 2, whole = mean * kLines;
    const auto from = allocate(std::max(in * kLines, whole)),
               to = allocate(std::max(out * kLines, whole));
    const VORN_ChunkyBuffer source = record(row.from, from.get(), memory, lineBytes(row.from));
    const VORN_ChunkyBuffer target = record(row.to, to.get(), memory, lineBytes(row.to));
    const auto copy = [&] {
        for (int32_t y = 0; y < kLines; ++y) {
            VORN_L_CopyCBtoCB(&source, &target, y, y, row.code, nullptr);
        }
    };
    // As many bytes read and written together.
    const auto lines = [&] {
        for (size_t y = 0; y < kLines; ++y) {
            std::memcpy(to.get() + y * mean, from.get() + y * mean, mean);
        }
    };
    const auto once = [&] { std::memcpy(to.get(), from.get(), whole); };
    std::vector<Contestant> contestants = {
        {{"vorn", copy}}, {{"memcpy by lines", lines}}, {{"memcpy at once", once}}};
    compete(contestants, rounds, 1);
    std::printf("%-24s", row.name);
    for (const Contestant& c : contestants) {
        std::printf("  %s %.3f (%.2f)", c.peer.name.c_str(), c.best * 1e9 / kWidth / kLines,
                    contestants[0].best / c.best);
    }
    std::printf("\n");
    std::fflush(stdout);
}

}  // namespace
}  // namespace vorn_bench

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20;
    const int32_t width = argc > 2 ? std::atoi(argv[2]) : 6000;
    std::printf("ns a pixel, lines of %d pixels in cache (in brackets: vorn's time to theirs)\n",
                width);
    for (const vorn_bench::Row& row : vorn_bench::kRows) {
        vorn_bench::measureLine(row, rounds, width);
    }
    std::printf("ns a pixel, whole pictures against memcpy of as many bytes\n");
    for (const vorn_bench::Row& row : vorn_bench::kRows) {
        if (!row.arithmetic) vorn_bench::measurePicture(row, std::max(1, rounds / 4));
    }
    return 0;
}
