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
    return bandOf(Layout::Interleaved, {width, lines, channels, bytes});
}

void fill(Picture& band, uint8_t value) {
    std::fill(band.memory.begin(), band.memory.end(), value);
}

std::string codesOf(const char* method,
                    int32_t srcLines,
                    int32_t dstLines,
                    int32_t sourceBand,
                    int32_t destinationBand) {
    ScaleRun run;
    run.method = method;
    run.width = 2, run.lines = dstLines;
    run.sourceBand = sourceBand, run.destinationBand = destinationBand;
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
        for (size_t i = 0; i < image.samples.size(); ++i) {
            image.samples[i] = static_cast<int32_t>(i * 37 % 256);
        }
        ScaleRun whole;
        whole.method = name;
        whole.width = 3, whole.lines = 31;
        whole.sourceBand = 23, whole.destinationBand = 31;
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
        for (int32_t y = 0; y < 31; ++y) {
            for (int32_t x = 0; x < 3; ++x) {
                ASSERT_EQ(expected.at(x, y, 0), destination.get(0, x, y)) << name << " line " << y;
            }
        }
    }
}

int32_t initNew(
    const char* name, Picture& source, int32_t srcLines, Picture& destination, int32_t dstLines) {
    const ScalerPointer scaler = allocate(name);
    const int32_t result = init(scaler, source, srcLines, destination, dstLines);
    if (result < 0) {
        EXPECT_EQ(VORN_S_CANT_GO_ON, VORN_S_SendData(scaler.get()));
    }
    return result;
}

TEST(InitScale, RefusesRecordsThatDontFitEachOther) {
    Picture rgb = plainBand(4, 4), rgba = plainBand(4, 4, 4), deep = plainBand(4, 4, 3, 2);
    Picture none = plainBand(4, 4), nine = plainBand(4, 4), triple = plainBand(4, 4);
    none.record.channels = 0;
    nine.record.channels = 9;
    triple.record.bytesPerChannel = 3;
    for (const char* name : kNames) {
        EXPECT_EQ(VORN_S_CHANNELS_DIFFER, initNew(name, rgb, 4, rgba, 4));
        EXPECT_EQ(VORN_S_CHANNELS_DIFFER, initNew(name, none, 4, none, 4));
        EXPECT_EQ(VORN_S_CHANNELS_DIFFER, initNew(name, nine, 4, nine, 4));
        EXPECT_EQ(VORN_S_BYTES_DIFFER, initNew(name, rgb, 4, deep, 4));
        EXPECT_EQ(VORN_S_BYTES_DIFFER, initNew(name, triple, 4, triple, 4));
        EXPECT_EQ(VORN_S_READY, initNew(name, rgb, 4, rgb, 4));
    }
}

TEST(InitScale, RefusesSizesOutOfTheScalersRange) {
    Picture band = plainBand(4, 4, 1), narrow = plainBand(1, 4, 1), wide = plainBand(16001, 1, 1);
    Picture empty = plainBand(4, 4, 1), tooWide = plainBand(65537, 1, 1);
    for (const char* name : kNames) {
        const bool cubic = std::string(name) == "bestup";
        const int32_t outer = cubic ? VORN_S_BAD_SIZE : VORN_S_READY;
        EXPECT_EQ(outer, initNew(name, narrow, 4, band, 4));
        EXPECT_EQ(outer, initNew(name, band, 1, band, 4));
        EXPECT_EQ(outer, initNew(name, band, 4, band, 16001));
        EXPECT_EQ(outer, initNew(name, wide, 4, band, 4));
        EXPECT_EQ(outer, initNew(name, band, 4, wide, 4));
        EXPECT_EQ(VORN_S_READY, initNew(name, band, 2, band, 16000));
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, band, 0, band, 4));
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, band, 4, band, -1));
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, band, 65537, band, 4));
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, tooWide, 4, band, 4));
        empty.record.height = 0;
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, empty, 4, band, 4));
        EXPECT_EQ(VORN_S_BAD_SIZE, initNew(name, band, 4, empty, 4));
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
    Picture source = bandOf(Layout::Cells, {7, 3, 3, 2});
    Picture destination = bandOf(Layout::Planar, {9, 3, 3, 2});
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
