// The band protocol, the answers of the front end, and memory.
#include <gtest/gtest.h>
#include <vorn/scaler.h>

#include <memory>

#include "support/memory.h"
#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

constexpr const char* kNames[] = {"fastest", "bestdown", "blscale", "bestup"};

struct Free {
    void operator()(VORN_Scaler* scaler) const { VORN_S_FreeScaler(scaler); }
};
using ScalerPointer = std::unique_ptr<VORN_Scaler, Free>;

ScalerPointer allocate(const char* name) { return ScalerPointer(VORN_S_AllocScaler(name)); }

int32_t init(const ScalerPointer& scaler,
             Picture& source,
             int32_t srcLines,
             Picture& destination,
             int32_t dstLines,
             VORN_LineCallback callback = nullptr,
             void* data = nullptr) {
    return VORN_S_InitScale(scaler.get(), srcLines, dstLines, &source.record, &destination.record,
                            callback, data);
}

Picture plainBand(int32_t width, int32_t lines, int32_t channels = 3, int32_t bytes = 1) {
    return bandOf({width, lines, channels, bytes});
}

void fill(Picture& band, uint8_t value) {
    std::fill(band.memory.begin(), band.memory.end(), value);
}

std::string codesOf(const char* method,
                    int32_t srcLines,
                    int32_t dstLines,
                    int32_t sourceBand,
                    int32_t destinationBand) {
    ScaleRun run{.method = method,
                 .width = 2,
                 .lines = dstLines,
                 .sourceBand = sourceBand,
                 .destinationBand = destinationBand};
    scaleThrough(Image(2, srcLines, 1, 1), run);
    return run.codes;
}

TEST(BandProtocol, AsksForBandsAndHandsLinesOutBeforeItFinishes) {
    EXPECT_EQ("123", codesOf("fastest", 10, 5, 10, 5));
    EXPECT_EQ("122223", codesOf("fastest", 4, 4, 4, 1));
    EXPECT_EQ("11111111123", codesOf("fastest", 10, 5, 1, 5));
    EXPECT_EQ("1123", codesOf("bestdown", 8, 4, 4, 4));
    EXPECT_EQ("122222223", codesOf("bestup", 2, 7, 2, 1));
    EXPECT_EQ("123", codesOf("blscale", 9, 1, 1, 1));  // asks for no lines without need
}

TEST(BandProtocol, StopsWhenTheLineCallbackSaysSo) {
    for (const char* name : kNames) {
        Picture source = plainBand(4, 8), destination = plainBand(4, 8);
        ScalerPointer scaler = allocate(name);
        int32_t calls = 0;
        const VORN_LineCallback stop = [](void* data) { return ++*static_cast<int32_t*>(data); };
        ASSERT_EQ(VORN_S_READY, init(scaler, source, 8, destination, 8, stop, &calls));
        fill(destination, Picture::kUntouched);
        ASSERT_EQ(VORN_S_FILL_SOURCE, VORN_S_SendData(scaler.get()));
        fill(source, 1);
        EXPECT_EQ(VORN_S_STOPPED, VORN_S_SendData(scaler.get())) << name;
        EXPECT_EQ(1, calls);
        EXPECT_EQ(1, destination.get(2, 3, 0)) << name;
        EXPECT_EQ(Picture::kUntouched, destination.get(0, 0, 1)) << name;
    }
}

// A caller that cuts the last band after it was asked for it, and one that changes the height of
// every band.
TEST(BandProtocol, TakesTheSourceRecordsHeightAsTheBandsLines) {
    for (const char* name : kNames) {
        Image image(3, 23, 1, 1);
        for (int32_t i = 0; i < 3 * 23; ++i) image.at(i % 3, i / 3, 0) = i * 37 % 256;
        ScaleRun whole{.method = name, .width = 3, .lines = 31};
        const Image expected = scaleThrough(image, whole);

        Picture source = plainBand(3, 8, 1), destination = plainBand(3, 31, 1);
        ScalerPointer scaler = allocate(name);
        ASSERT_EQ(VORN_S_READY, init(scaler, source, 23, destination, 31));
        int32_t read = 0, code = 0;
        constexpr int32_t kHeights[] = {5, 8, 3, 7};
        for (int32_t call = 0; code != VORN_S_FINISHED && call < 40; ++call) {
            source.record.height = kHeights[call % 4];
            code = VORN_S_SendData(scaler.get());
            ASSERT_GT(code, 0);
            if (code != VORN_S_FILL_SOURCE) continue;
            fillBand(source, image, read);
            source.record.height = 1;  // too late to count
        }
        for (int32_t i = 0; i < 3 * 31; ++i)
            ASSERT_EQ(expected.at(i % 3, i / 3, 0), destination.get(0, i % 3, i / 3)) << name;
    }
}

TEST(InitScale, RefusesRecordsThatDontFitEachOtherAndSizesOutOfTheScalersRange) {
    using vorn::test::Shape;
    const struct {
        Shape source;
        int32_t srcLines;
        Shape destination;
        int32_t dstLines, answer, cubicsAnswer;
    } cases[] = {
        {{4, 4, 3, 1}, 4, {4, 4, 4, 1}, 4, VORN_S_CHANNELS_DIFFER, VORN_S_CHANNELS_DIFFER},
        {{4, 4, 0, 1}, 4, {4, 4, 0, 1}, 4, VORN_S_CHANNELS_DIFFER, VORN_S_CHANNELS_DIFFER},
        {{4, 4, 9, 1}, 4, {4, 4, 9, 1}, 4, VORN_S_CHANNELS_DIFFER, VORN_S_CHANNELS_DIFFER},
        {{4, 4, 3, 1}, 4, {4, 4, 3, 2}, 4, VORN_S_BYTES_DIFFER, VORN_S_BYTES_DIFFER},
        {{4, 4, 3, 3}, 4, {4, 4, 3, 3}, 4, VORN_S_BYTES_DIFFER, VORN_S_BYTES_DIFFER},
        {{1, 4, 1, 1}, 4, {4, 4, 1, 1}, 4, VORN_S_READY, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 1, {4, 4, 1, 1}, 4, VORN_S_READY, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 4, {4, 4, 1, 1}, 16001, VORN_S_READY, VORN_S_BAD_SIZE},
        {{16001, 1, 1, 1}, 4, {4, 4, 1, 1}, 4, VORN_S_READY, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 4, {16001, 1, 1, 1}, 4, VORN_S_READY, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 2, {4, 4, 1, 1}, 16000, VORN_S_READY, VORN_S_READY},
        {{4, 4, 1, 1}, 0, {4, 4, 1, 1}, 4, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 4, {4, 4, 1, 1}, -1, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 65537, {4, 4, 1, 1}, 4, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
        {{65537, 1, 1, 1}, 4, {4, 4, 1, 1}, 4, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
        {{4, 0, 1, 1}, 4, {4, 4, 1, 1}, 4, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
        {{4, 4, 1, 1}, 4, {4, 0, 1, 1}, 4, VORN_S_BAD_SIZE, VORN_S_BAD_SIZE},
    };
    const auto bandThatSays = [](const Shape& shape) {
        Picture band = plainBand(4, 4);  // nobody looks at its pixels
        band.record.width = shape.width, band.record.height = shape.height;
        band.record.channels = shape.channels, band.record.bytesPerChannel = shape.bytes;
        return band;
    };
    for (const char* name : kNames) {
        for (const auto& c : cases) {
            Picture source = bandThatSays(c.source), destination = bandThatSays(c.destination);
            const ScalerPointer scaler = allocate(name);
            const int32_t answer = std::string(name) == "bestup" ? c.cubicsAnswer : c.answer;
            EXPECT_EQ(answer, init(scaler, source, c.srcLines, destination, c.dstLines));
            EXPECT_EQ(answer == VORN_S_READY ? VORN_S_FILL_SOURCE : VORN_S_CANT_GO_ON,
                      VORN_S_SendData(scaler.get()))
                << name << " " << &c - cases;
        }
    }
}

TEST(FrontEnd, SurvivesNullAndScalersThatAreNotSetUp) {
    Picture band = plainBand(4, 4);
    VORN_S_FreeScaler(nullptr);
    VORN_S_EndScale(nullptr);
    EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(nullptr));
    EXPECT_EQ(VORN_S_CANT_GO_ON,
              VORN_S_InitScale(nullptr, 4, 4, &band.record, &band.record, nullptr, nullptr));
    for (const char* name : kNames) {
        ScalerPointer scaler = allocate(name);
        EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(scaler.get()));
        EXPECT_EQ(VORN_S_CANT_GO_ON,
                  VORN_S_InitScale(scaler.get(), 4, 4, nullptr, &band.record, nullptr, nullptr));
        EXPECT_EQ(VORN_S_READY, init(scaler, band, 4, band, 4));
        VORN_S_EndScale(scaler.get());
        VORN_S_EndScale(scaler.get());
        EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(scaler.get()));
    }
}

// A scaler is set up again in the middle of an image, for one that needs larger buffers.
TEST(InitScale, EndsTheImageBefore) {
    for (const char* name : kNames) {
        Picture small = plainBand(4, 4, 1), source = plainBand(9, 9, 1),
                destination = plainBand(5, 5, 1);
        ScalerPointer scaler = allocate(name);
        ASSERT_EQ(VORN_S_READY, init(scaler, small, 40, small, 40));
        EXPECT_EQ(VORN_S_FILL_SOURCE, VORN_S_SendData(scaler.get()));
        EXPECT_EQ(VORN_S_BAD_SIZE, init(scaler, small, 0, small, 40));
        EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(scaler.get())) << "nor does a refused one";
        ASSERT_EQ(VORN_S_READY, init(scaler, source, 9, destination, 5));
        EXPECT_EQ(VORN_S_FILL_SOURCE, VORN_S_SendData(scaler.get()));
        fill(source, 77);
        EXPECT_EQ(VORN_S_TAKE_DESTINATION, VORN_S_SendData(scaler.get()));
        EXPECT_EQ(VORN_S_FINISHED, VORN_S_SendData(scaler.get()));
        EXPECT_EQ(77, destination.get(0, 4, 4)) << name;
    }
}

TEST(InitScale, LeavesNothingBehindWhenAnyAllocationFails) {
    Picture source = Picture::inForm("gaps", {7, 3, 3, 2});
    Picture destination = Picture::inForm("planes", {9, 3, 3, 2});
    const auto setUp = [&](const ScalerPointer& scaler) {
        return init(scaler, source, 7, destination, 9);
    };
    vorn::failAllocation(1);
    EXPECT_EQ(nullptr, VORN_S_AllocScaler("bestdown"));
    for (const char* name : kNames) {
        ScalerPointer scaler = allocate(name);
        vorn::failAllocation(0);
        ASSERT_EQ(VORN_S_READY, setUp(scaler));
        const unsigned allocations = vorn::failAllocation(0);
        ASSERT_GT(allocations, 2u);
        for (unsigned n = 1; n <= allocations; ++n) {
            vorn::failAllocation(n, n % 2 == 0);
            EXPECT_EQ(VORN_S_NO_MEMORY, setUp(scaler)) << name << " allocation " << n;
            vorn::failAllocation(0);
            EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(scaler.get()));
        }
        EXPECT_EQ(VORN_S_READY, setUp(scaler));
        EXPECT_EQ(VORN_S_FILL_SOURCE, VORN_S_SendData(scaler.get()));
    }
}

}  // namespace
}  // namespace vorn_test
