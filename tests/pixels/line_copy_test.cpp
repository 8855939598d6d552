#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <string>

#include "pixels/data_format.h"
#include "support/cpu.h"
#include "tests/pixels/slow_line_copy.h"

namespace vorn::test {
namespace {

TEST(ColorCorrection, ConvertsOnlyBetweenGrayRgbAndYuv601AndOutOfPalettes) {
    const std::string codes[] = {"00000000", "00204000", "01006000", "00000000",
                                 "03500000", "00000000", "00000000", "77777770"};
    for (int s = -1; s < 9; s++) {
        for (int d = -1; d < 9; d++) {
            const bool known = s >= 0 && s < 8 && d >= 0 && d < 8;
            const int expected = known ? codes[s][static_cast<size_t>(d)] - '0' : s == 7 ? 7 : 0;
            uint32_t code = 99;
            EXPECT_TRUE(VORN_L_SetColorSpaceCorrection(&code, s, d));
            EXPECT_EQ(code, static_cast<uint32_t>(expected)) << s << " to " << d;
        }
    }
}

// One pixel.
Picture pixel(const std::vector<int>& samples, int bytes) {
    const int channels = static_cast<int>(samples.size());
    Picture made = Picture::standard(lineInterleavedLayout(bytes), 1, 1, channels);
    for (int c = 0; c < channels; c++) made.set(c, 0, 0, samples[static_cast<size_t>(c)]);
    return made;
}

TEST(LineCopy, ConvertsKnownPixels) {
    const struct {
        uint32_t code;
        std::vector<int> in;
        int inBytes;
        std::vector<int> out;
        int outBytes;
    } cases[] = {
        {1, {255, 255, 254}, 1, {257 * 764 / 3}, 2},
        {6, {255, 255, 255}, 1, {235, 128, 128}, 1},
        {5, {235, 128, 128}, 1, {255, 255, 255}, 1},
        {3, {235, 128, 128}, 1, {255}, 1},
        {2, {200}, 1, {51400, 51400, 51400}, 2},
        {0, {0x12AB}, 2, {0x12}, 1},
        // Outside the video ranges; blue alone would leave 32 bits in the first.
        {5, {65535, 65535, 65535}, 2, {65535, 32184, 65535}, 2},
        {5, {0, 0, 0}, 2, {0, 39646, 0}, 2},
        {3, {65535, 0, 0}, 2, {65535}, 2},
        // Alpha follows the colours.
        {1, {30, 60, 90, 77}, 1, {60, 77}, 1},
        {2, {9, 77}, 1, {9, 9, 9, 77}, 1},
        // Buffers that don't suit the conversion are copied, and nothing is done without a palette.
        {1, {5, 6}, 1, {5, 6}, 1},
        {9, {5, 6, 7}, 1, {5, 6, 7}, 1},
        {7, {5}, 1, {0xA5, 0xA5}, 1},
    };
    for (const auto& c : cases) {
        const Picture in = pixel(c.in, c.inBytes);
        const Picture made = pixel(std::vector<int>(c.out.size(), 0xA5A5), c.outBytes);
        VORN_L_CopyCBtoCB(&in.record, &made.record, 0, 0, c.code, nullptr);
        EXPECT_EQ(made.memory, pixel(c.out, c.outBytes).memory) << &c - cases;
    }
}

// Memory between two pages that can't be read.
class GuardedMemory {
  public:
    GuardedMemory() { EXPECT_EQ(mprotect(pages_ + kPage, kSize, PROT_READ | PROT_WRITE), 0); }
    ~GuardedMemory() { munmap(pages_, kSize + 2 * kPage); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    // Puts the bytes at one of its ends.
    uint8_t* put(const std::vector<uint8_t>& bytes, bool atEnd) const {
        EXPECT_LE(bytes.size(), kSize);
        uint8_t* place = pages_ + kPage + (atEnd ? kSize - bytes.size() : 0);
        std::copy(bytes.begin(), bytes.end(), place);
        return place;
    }

  private:
    static constexpr size_t kPage = 65536;
    static constexpr size_t kSize = 4 * kPage;
    uint8_t* const pages_ = static_cast<uint8_t*>(
        mmap(nullptr, kSize + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
};

class LineCopyAgainstSlowCopy : public testing::TestWithParam<int> {
  protected:
    void TearDown() override { limitKernels(KernelLevel::Newest); }

    // Every byte of the destination's memory is as a sample-by-sample copy leaves it, whatever the
    // kernels, and none beside the memory is touched.
    void compare(const Picture& in, const Picture& out, int from, int to, const Picture* palette) {
        Picture expected = out.clone();
        slowLineCopy(in, expected, from, to, GetParam(), palette);
        for (int way = 0; way < 6; way++) {
            const bool atEnd = way % 2 == 0;
            const VORN_ChunkyBuffer source = in.recordAt(source_.put(in.memory, atEnd));
            uint8_t* const made = destination_.put(out.memory, atEnd);
            const VORN_ChunkyBuffer destination = out.recordAt(made);
            limitKernels(static_cast<KernelLevel>(way / 2));
            VORN_L_CopyCBtoCB(&source, &destination, from, to, static_cast<uint32_t>(GetParam()),
                              palette ? &palette->record : nullptr);
            ASSERT_TRUE(std::equal(expected.memory.begin(), expected.memory.end(), made))
                << "level " << way / 2 << ", " << in.record.width << "x" << in.record.channels
                << "x" << in.record.bytesPerChannel << " to " << out.record.width << "x"
                << out.record.channels << "x" << out.record.bytesPerChannel;
        }
    }

    Picture filled(const Shape& shape) {
        Picture picture = Picture::any(random_, shape, 0);
        picture.fill(random_);
        for (int c = 0; c < shape.channels; c++)
            if (pick(random_, 0, 7) == 0) picture.drop(c);
        return picture;
    }

    Random random_{1000u + static_cast<unsigned>(GetParam())};
    GuardedMemory source_, destination_;
};

TEST_P(LineCopyAgainstSlowCopy, LeavesTheSameBytes) {
    const auto upTo = [&](int most) { return pick(random_, 1, most); };
    for (int round = 0; round < 6000 && !HasFatalFailure(); round++) {
        SCOPED_TRACE(round);
        const int width = upTo(30) == 1 ? pick(random_, 500, 1600) : upTo(70);
        const int channels = upTo(3) == 1 ? 8 : 4;
        const Shape in{width, upTo(2), upTo(channels), upTo(2)};
        const Shape out{upTo(width), upTo(2), upTo(channels), upTo(2)};
        Picture palette =
            Picture::standard(lineInterleavedLayout(out.bytes), upTo(300), 1, upTo(4));
        palette.fill(random_);
        if (upTo(6) == 1) palette.drop(upTo(palette.record.channels) - 1);
        Picture source = filled(in);
        if (upTo(8) == 1) source.record.pixelStep[in.channels - 1] = 0;  // one sample for all
        compare(source, filled(out), upTo(in.height) - 1, upTo(out.height) - 1, &palette);
    }
}

// The layouts that have kernels of their own, at every width up to two of their steps.
TEST_P(LineCopyAgainstSlowCopy, LeavesTheSameBytesAtEveryWidth) {
    const struct {
        const char* form;
        int channels, bytes;
        bool reversed = false;  // blue first
    } kinds[] = {{"planes", 1, 1},      {"planes", 1, 2},  {"planes", 3, 1}, {"planes", 3, 2},
                 {"cells", 3, 1},       {"cells", 3, 2},   {"cells", 4, 1},  {"cells", 4, 2},
                 {"cells", 3, 1, true}, {"mirrored", 3, 1}};
    const auto make = [&](const auto& kind, int width) {
        Picture picture = Picture::inForm(kind.form, {width, 1, kind.channels, kind.bytes}, 0);
        picture.fill(random_);
        if (kind.reversed)
            std::swap(picture.record.channelPlace[0], picture.record.channelPlace[2]);
        return picture;
    };
    for (const auto& in : kinds) {
        for (const auto& out : kinds) {
            Picture palette = Picture::standard(lineInterleavedLayout(out.bytes), 200, 1, 4);
            palette.fill(random_);
            for (int width = 1; width <= 67 && !HasFatalFailure(); width++)
                compare(make(in, width), make(out, width), 0, 0, &palette);
        }
    }
}

// Every triple of the values around which conversions clamp and round.
TEST_P(LineCopyAgainstSlowCopy, IsExactInTheCorners) {
    const int values[2][15] = {
        {0, 1, 15, 16, 17, 127, 128, 129, 234, 235, 236, 239, 240, 254, 255},
        {0, 1, 255, 256, 4111, 4112, 4113, 32767, 32768, 32895, 32896, 32897, 60395, 65534, 65535}};
    for (int inBytes = 1; inBytes <= 2; inBytes++) {
        Picture source = Picture::standard(lineInterleavedLayout(inBytes), 15 * 15 * 15, 1, 3);
        for (int x = 0; x < source.record.width; x++) {
            source.set(0, x, 0, values[inBytes - 1][x / 225]);
            source.set(1, x, 0, values[inBytes - 1][x / 15 % 15]);
            source.set(2, x, 0, values[inBytes - 1][x % 15]);
        }
        for (const int layout : {DF_LineInterleaved8, DF_LineInterleaved16})
            for (const int channels : {1, 3})
                compare(source, Picture::standard(layout, source.record.width, 1, channels), 0, 0,
                        nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Conversions, LineCopyAgainstSlowCopy, testing::Range(0, 8));

}  // namespace
}  // namespace vorn::test
