// The kernels for newer processors against the plain ones: the same bytes, and not one touched that
// is no sample of the line.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>

#include "support/cpu.h"
#include "tests/pixels/slow_line_copy.h"

namespace vorn::test {
namespace {

// Memory between two pages that can't be read.
class GuardedMemory {
  public:
    GuardedMemory()
        : pages_(static_cast<uint8_t*>(
              mmap(nullptr, kSize + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
        EXPECT_EQ(mprotect(pages_ + kPage, kSize, PROT_READ | PROT_WRITE), 0);
    }
    ~GuardedMemory() { munmap(pages_, kSize + 2 * kPage); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    // So many bytes at one of its ends.
    uint8_t* bytes(size_t count, bool atEnd) const {
        EXPECT_LE(count, kSize);
        return pages_ + kPage + (atEnd ? kSize - count : 0);
    }

  private:
    static constexpr size_t kPage = 65536;
    static constexpr size_t kSize = 65536;
    uint8_t* pages_;
};

// How the pixels of a line lie: all channels in cells of so many bytes, or (0) each in a run of its
// own.
struct Layout {
    int channels;
    int bytes;
    int cell;
    int order[4];  // of the channels in a cell
    bool mirrored = false;

    int step() const { return (cell == 0 ? bytes : cell) * (mirrored ? -1 : 1); }
    size_t size(int width) const {
        if (cell == 0) return static_cast<size_t>(channels * bytes * width);
        const int used = *std::max_element(order, order + channels) + bytes;
        return static_cast<size_t>(cell * (width - 1) + used);
    }
    VORN_ChunkyBuffer record(uint8_t* memory, int width) const {
        VORN_ChunkyBuffer made{};
        made.width = width;
        made.height = 1;
        made.channels = channels;
        made.bytesPerChannel = bytes;
        for (int c = 0; c < channels; c++) {
            made.pixelStep[c] = step();
            made.channelPlace[c] = memory + (cell == 0 ? c * bytes * width : order[c]) -
                                   (mirrored ? step() * (width - 1) : 0);
        }
        return made;
    }
};

const Layout kLayouts[] = {
    {1, 1, 0, {}},
    {1, 2, 0, {}},
    {3, 1, 0, {}},
    {3, 2, 0, {}},
    {4, 1, 0, {}},
    {4, 2, 0, {}, true},
    {3, 1, 3, {0, 1, 2}},
    {3, 1, 3, {2, 1, 0}},
    {3, 1, 3, {0, 1, 2}, true},
    {3, 1, 4, {0, 1, 2}},
    {3, 1, 4, {3, 2, 1}},
    {4, 1, 4, {3, 0, 1, 2}},
    {2, 1, 2, {0, 1}},
    {3, 1, 7, {5, 0, 3}},
    {4, 1, 11, {0, 10, 5, 3}, true},
    {3, 2, 6, {0, 2, 4}},
    {3, 2, 6, {4, 2, 0}, true},
    {3, 2, 8, {0, 2, 4}},
    {4, 2, 8, {6, 4, 2, 0}},
    {1, 1, 5, {2}},
    {1, 2, 3, {0}},
    {2, 2, 13, {0, 9}},
    {4, 1, 40, {0, 13, 26, 39}},
};

class Kernels : public testing::Test {
  protected:
    void SetUp() override {
        if (!useAvx2()) GTEST_SKIP() << "this processor has only the plain kernels";
        palette_.fill(random_);
        palette_.record.width = 200;
    }

    // The ends of the range count more.
    static std::vector<uint8_t> randomPool(Random& random) {
        std::vector<uint8_t> bytes(65536);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(std::clamp(pick(random, -60, 315), 0, 255));
        }
        return bytes;
    }
    std::vector<uint8_t> randomBytes(size_t count) {
        const auto* first = pool_.data() + pick(random_, 0, 65536 - static_cast<int>(count));
        return {first, first + count};
    }

    std::vector<uint8_t> copied(const Layout& in,
                                const Layout& out,
                                int width,
                                uint32_t code,
                                KernelLevel level,
                                bool atEnd,
                                const std::vector<uint8_t>& from,
                                const std::vector<uint8_t>& to) {
        std::memcpy(source_.bytes(from.size(), atEnd), from.data(), from.size());
        uint8_t* made = destination_.bytes(to.size(), atEnd);
        std::memcpy(made, to.data(), to.size());
        const VORN_ChunkyBuffer source = in.record(source_.bytes(from.size(), atEnd), width);
        const VORN_ChunkyBuffer destination = out.record(made, width);
        palette_.record.bytesPerChannel = out.bytes;
        limitKernels(level);
        VORN_L_CopyCBtoCB(&source, &destination, 0, 0, code, &palette_.record);
        limitKernels(KernelLevel::Newest);
        return {made, made + to.size()};
    }

    void compare(const Layout& in, const Layout& out, int width, uint32_t code) {
        const std::vector<uint8_t> from = randomBytes(in.size(width));
        const std::vector<uint8_t> to = randomBytes(out.size(width));
        const std::vector<uint8_t> expected =
            copied(in, out, width, code, KernelLevel::Plain, false, from, to);
        for (const int way : {0, 1, 2, 3}) {
            const KernelLevel level = way < 2 ? KernelLevel::Newest : KernelLevel::Avx2;
            ASSERT_EQ(copied(in, out, width, code, level, way % 2 == 0, from, to), expected)
                << "level " << static_cast<int>(level) << ", code " << code << ", width " << width
                << ", layout " << &in - kLayouts << " to " << &out - kLayouts;
        }
    }

    Random random_{11};
    const std::vector<uint8_t> pool_ = randomPool(random_);
    GuardedMemory source_, destination_;
    Picture palette_ = Picture::standard(DF_LineInterleaved16, 256, 1, 4);
};

TEST_F(Kernels, MakeWhatThePlainOnesMake) {
    for (const Layout& in : kLayouts) {
        for (const Layout& out : kLayouts) {
            for (int width = 1; width <= 67 && !HasFatalFailure(); width++) {
                compare(in, out, width, 0);
                compare(in, out, width, static_cast<uint32_t>(pick(random_, 1, 7)));
            }
            compare(in, out, 1100, static_cast<uint32_t>(pick(random_, 0, 7)));
        }
    }
}

// Every triple of the values around which conversions clamp and round.
TEST(Conversions, AreExactInTheCorners) {
    const int narrow[] = {0, 1, 15, 16, 17, 127, 128, 129, 234, 235, 236, 239, 240, 254, 255};
    const int wide[] = {0,     1,     255,   256,   4111,  4112,  4113, 32767,
                        32768, 32895, 32896, 32897, 60395, 65534, 65535};
    for (int sizes = 0; sizes < 4; sizes++) {
        const int* value = (sizes & 2) != 0 ? wide : narrow;
        Picture source = Picture::standard((sizes & 2) != 0 ? 4 : 1, 15 * 15 * 15, 1, 3);
        for (int x = 0; x < source.record.width; x++) {
            source.set(0, x, 0, value[x / 225]);
            source.set(1, x, 0, value[x / 15 % 15]);
            source.set(2, x, 0, value[x % 15]);
        }
        for (const int code : {1, 3, 5, 6}) {
            const Picture empty = Picture::standard((sizes & 1) != 0 ? 4 : 1, source.record.width,
                                                    1, code < 5 ? 1 : 3);
            Picture expected = empty.clone();
            slowLineCopy(source, expected, 0, 0, code, nullptr);
            for (const KernelLevel level : {KernelLevel::Plain, KernelLevel::Newest}) {
                const Picture made = empty.clone();
                limitKernels(level);
                VORN_L_CopyCBtoCB(&source.record, &made.record, 0, 0, static_cast<uint32_t>(code),
                                  nullptr);
                limitKernels(KernelLevel::Newest);
                EXPECT_EQ(made.memory, expected.memory) << "code " << code << ", sizes " << sizes;
            }
        }
    }
}

}  // namespace
}  // namespace vorn::test
