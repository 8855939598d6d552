#include <gtest/gtest.h>

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

Bytes block(int32_t first, const Bytes& data) {
    return MessageBytes()
        .number(ITAG_ReadWidth, 4)
        .number(ITAG_ReadHeight, 1)
        .number(ITAG_ReadLineNo, first)
        .data(ITAG_Data, data.data(), data.size())
        .end();
}

TEST(SendImageData, SendsAtMostWhatTheAreaHolds) {
    const Bytes lines(98'304);
    readWith(
        [&] {
            EXPECT_EQ(VORN_M_SendImageDataMaxSize(), 98'048);
            for (const int32_t size : {98'241, 98'304, INT32_MAX, -1}) {
                EXPECT_EQ(VORN_M_SendImageDataBegin(4, 1, 0, nullptr, size), nullptr);
                EXPECT_FALSE(VORN_M_SendImageData(4, 1, 0, lines.data(), size));
            }
            EXPECT_TRUE(VORN_M_SendImageData(4, 1, 0, lines.data(), 98'240));
            const std::string text(98'304, 't');
            EXPECT_FALSE(VORN_M_SetVaImageInfo(ITAG_Artist, VORN_Word(text.c_str()), TAG_End));
        },
        {block(0, Bytes(98'240)), acknowledgementOf(3)});
}

TEST(SendImageData, EndsAfterTheHostsInterrupt) {
    const Bytes line = {1, 2, 3, 4};
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
    twin.send(command(CMD_Terminate));  // ends nothing here: it is released unread
    int32_t received = 0;
    Bytes message;
    while ((message = twin.receive()) == block(received, line)) {
        if (++received == 3) twin.send(interrupt());
    }
    EXPECT_EQ(message, emptyMessage());
    EXPECT_GE(received, 3);
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
    const struct {
        int32_t lineSize, most;
        bool memoryFails = false;
    } cases[] = {{100'000, 100}, {98'049, 1}, {1000, 0}, {0, 10}, {-5, 10}, {1000, 10, true}};
    for (const auto& c : cases) {
        readWith(
            [&] {
                if (c.memoryFails) vorn::failAllocation(1, true);
                EXPECT_EQ(linesFor(c.lineSize, c.most), -1);
                vorn::failAllocation(0);
            },
            {acknowledgementWithError(3, 17, 0)});
    }
}

}  // namespace
