#include <gtest/gtest.h>

#include <numeric>

#include "support/memory.h"
#include "tests/module/twin.h"

namespace {

// What the host gets when a loader reads like this.
void readWith(std::function<void()> read, std::vector<Bytes> expected) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderRead = std::move(read);
    expected.insert(expected.begin(), emptyMessage());
    converse(VORN_LOADER, callbacks,
             {{command(CMD_LoadInfo), {acknowledgementOf(2)}}, {command(CMD_LoadData), expected}});
}

Bytes block(int32_t width, int32_t lines, int32_t first, const Bytes& data) {
    return MessageBytes()
        .number(ITAG_ReadWidth, width)
        .number(ITAG_ReadHeight, lines)
        .number(ITAG_ReadLineNo, first)
        .data(ITAG_Data, data.data(), data.size())
        .end();
}

Bytes someBytes(size_t count) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t{1});
    return bytes;
}

TEST(SendImageData, SendsLinesBetweenTheirTagsFromABufferOrInPlace) {
    const Bytes lines = someBytes(30);
    readWith(
        [&] {
            EXPECT_TRUE(VORN_M_SendImageData(10, 3, 7, lines.data(), 30));
            EXPECT_TRUE(VORN_M_SendImageData(10, 0, 10, lines.data(), 0));
            void* place = VORN_M_SendImageDataBegin(10, 3, 0, nullptr, 30);
            ASSERT_NE(place, nullptr);
            std::memcpy(place, lines.data(), lines.size());
            EXPECT_TRUE(VORN_M_SendImageDataEnd());
        },
        {block(10, 3, 7, lines), block(10, 0, 10, {}), block(10, 3, 0, lines),
         acknowledgementOf(3)});
}

TEST(SendImageData, SendsAtMostWhatTheAreaHolds) {
    const Bytes lines(98'304);
    readWith(
        [&] {
            EXPECT_EQ(VORN_M_SendImageDataMaxSize(), 98'048);
            for (const int32_t size : {98'241, 98'304, INT32_MAX, -1}) {
                EXPECT_EQ(VORN_M_SendImageDataBegin(1, 1, 0, nullptr, size), nullptr);
                EXPECT_FALSE(VORN_M_SendImageData(1, 1, 0, lines.data(), size));
            }
            EXPECT_TRUE(VORN_M_SendImageData(1, 1, 0, lines.data(), 98'240));
        },
        {block(1, 1, 0, Bytes(98'240)), acknowledgementOf(3)});
}

TEST(SendImageData, EndsAfterTheHostsInterrupt) {
    const Bytes line(4);
    int32_t sentBlocks = 0;
    Callbacks callbacks = plainLoader();
    callbacks.loaderRead = [&] {
        while (VORN_M_SendImageData(4, 1, sentBlocks, line.data(), 4)) ++sentBlocks;
    };
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    twin.send(command(CMD_LoadInfo));
    twin.receive();
    twin.send(command(CMD_LoadData));
    EXPECT_EQ(twin.receive(), emptyMessage());
    EXPECT_EQ(twin.receive(), block(4, 1, 0, line));
    twin.send(command(CMD_Terminate));  // ends nothing here: it is released unread
    for (int32_t first = 1; first < 3; ++first) {
        EXPECT_EQ(twin.receive(), block(4, 1, first, line));
    }
    twin.send(interrupt());
    Bytes message = twin.receive();
    int32_t received = 3;
    for (; message == block(4, 1, received, line); ++received) message = twin.receive();
    EXPECT_EQ(message, emptyMessage());
    EXPECT_EQ(twin.receive(), acknowledgementOf(3));
    twin.terminate();
    EXPECT_EQ(sentBlocks, received);
}

int32_t linesFor(int32_t lineSize, int32_t most) {
    void* buffer = nullptr;
    int32_t lines = 0;
    if (!VORN_M_AllocateLoadBuffer(lineSize, most, &buffer, &lines)) return -1;
    std::memset(buffer, 0xAA, static_cast<size_t>(lines) * static_cast<size_t>(lineSize));
    VORN_M_FreeLoadBuffer(buffer);
    return lines;
}

TEST(LoadBuffer, HoldsSixteenLinesAndNoMoreThanABlock) {
    readWith(
        [] {
            EXPECT_EQ(linesFor(1000, 100), 16);
            EXPECT_EQ(linesFor(1000, 5), 5);
            EXPECT_EQ(linesFor(30'000, 100), 3);
            EXPECT_EQ(linesFor(98'048, 1), 1);
            vorn::failAllocation(1);
            EXPECT_EQ(linesFor(1000, 100), 8);
        },
        {acknowledgementOf(3)});
}

TEST(LoadBuffer, IsErrorSeventeenWhenThereIsNone) {
    const int32_t sizes[][2] = {{100'000, 100}, {98'049, 1}, {1000, 0}, {0, 10}, {-5, 10}};
    const Bytes error = acknowledgementWithError(3, 17, 0);
    for (const auto& size : sizes) {
        readWith([&] { EXPECT_EQ(linesFor(size[0], size[1]), -1); }, {error});
    }
    readWith(
        [] {
            vorn::failAllocation(1, true);
            EXPECT_EQ(linesFor(1000, 10), -1);
            vorn::failAllocation(0);
        },
        {error});
}

}  // namespace
