#include <gtest/gtest.h>

#include <numeric>

#include "support/memory.h"
#include "tests/module/twin.h"

namespace {

// Up to where the loader's read callback runs.
void startReading(Twin& twin) {
    twin.receive();
    twin.send(CMD_LoadInfo);
    twin.receive();
    twin.send(CMD_LoadData);
    EXPECT_EQ(twin.receive(), emptyMessage());
}

Callbacks readingWith(std::function<void()> read) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderRead = std::move(read);
    return callbacks;
}

void finish(Twin& twin) {
    EXPECT_EQ(twin.receive(), acknowledgementOf(3));
    twin.terminate();
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

TEST(SendImageData, SendsTheLinesBetweenItsTags) {
    const Bytes lines = someBytes(30);
    Twin twin(VORN_LOADER, readingWith([&] {
                  EXPECT_TRUE(VORN_M_SendImageData(10, 3, 7, lines.data(), 30));
                  EXPECT_TRUE(VORN_M_SendImageData(10, 0, 10, lines.data(), 0));
              }));
    startReading(twin);
    const Bytes message = twin.receive();
    EXPECT_EQ(message.size(), 84u);
    EXPECT_EQ(message, block(10, 3, 7, lines));
    EXPECT_EQ(twin.receive(), block(10, 0, 10, {}));
    finish(twin);
}

TEST(SendImageData, SendsWhatTheModuleWritesInPlace) {
    const Bytes lines = someBytes(30);
    Twin twin(VORN_LOADER, readingWith([&] {
                  void* place = VORN_M_SendImageDataBegin(10, 3, 0, nullptr, 30);
                  ASSERT_NE(place, nullptr);
                  std::memcpy(place, lines.data(), lines.size());
                  EXPECT_TRUE(VORN_M_SendImageDataEnd());
              }));
    startReading(twin);
    EXPECT_EQ(twin.receive(), block(10, 3, 0, lines));
    finish(twin);
}

TEST(SendImageData, SendsAtMostWhatTheAreaHolds) {
    const Bytes lines(98'304);
    Twin twin(VORN_LOADER, readingWith([&] {
                  EXPECT_EQ(VORN_M_SendImageDataMaxSize(), 98'048);
                  for (const int32_t size : {98'241, 98'304, INT32_MAX, -1}) {
                      EXPECT_EQ(VORN_M_SendImageDataBegin(1, 1, 0, nullptr, size), nullptr);
                      EXPECT_FALSE(VORN_M_SendImageData(1, 1, 0, lines.data(), size));
                  }
                  EXPECT_TRUE(VORN_M_SendImageData(1, 1, 0, lines.data(), 98'240));
              }));
    startReading(twin);
    EXPECT_EQ(twin.receive().size(), 98'240u + 44 + 8);
    finish(twin);
}

TEST(SendImageData, EndsAfterTheHostsInterrupt) {
    const Bytes line(4);
    int32_t sentBlocks = 0;
    Twin twin(VORN_LOADER, readingWith([&] {
                  while (VORN_M_SendImageData(4, 1, sentBlocks, line.data(), 4)) ++sentBlocks;
              }));
    startReading(twin);
    EXPECT_EQ(twin.receive(), block(4, 1, 0, line));
    twin.send(CMD_Terminate);  // ends nothing here: it is released unread
    for (int32_t first = 1; first < 3; ++first) {
        EXPECT_EQ(twin.receive(), block(4, 1, first, line));
    }
    twin.send(interrupt());
    Bytes message = twin.receive();
    int32_t received = 3;
    for (; message == block(4, 1, received, line); ++received) message = twin.receive();
    EXPECT_EQ(message, emptyMessage());
    finish(twin);
    EXPECT_EQ(sentBlocks, received);
}

TEST(LoadBuffer, HoldsSixteenLinesAndNoMoreThanABlock) {
    const auto linesFor = [](int32_t lineSize, int32_t most) {
        void* buffer = nullptr;
        int32_t lines = 0;
        if (!VORN_M_AllocateLoadBuffer(lineSize, most, &buffer, &lines)) return -1;
        std::memset(buffer, 0xAA, static_cast<size_t>(lines) * static_cast<size_t>(lineSize));
        VORN_M_FreeLoadBuffer(buffer);
        return lines;
    };
    Twin twin(VORN_LOADER, readingWith([&] {
                  EXPECT_EQ(linesFor(1000, 100), 16);
                  EXPECT_EQ(linesFor(1000, 5), 5);
                  EXPECT_EQ(linesFor(30'000, 100), 3);
                  EXPECT_EQ(linesFor(98'048, 1), 1);
                  vorn::failAllocation(1);
                  const int32_t fewer = linesFor(1000, 100);
                  EXPECT_GE(fewer, 1);
                  EXPECT_LT(fewer, 16);
              }));
    startReading(twin);
    finish(twin);
}

TEST(LoadBuffer, IsErrorSeventeenWhenThereIsNone) {
    const auto refused = [](int32_t lineSize, int32_t most, bool noMemory) {
        Twin twin(VORN_LOADER, readingWith([=] {
                      void* buffer = nullptr;
                      int32_t lines = 0;
                      if (noMemory) vorn::failAllocation(1, true);
                      EXPECT_FALSE(VORN_M_AllocateLoadBuffer(lineSize, most, &buffer, &lines));
                      vorn::failAllocation(0);
                  }));
        startReading(twin);
        const Bytes message = twin.receive();
        twin.terminate();
        return message;
    };
    const Bytes error = acknowledgementWithError(3, 17, 0);
    EXPECT_EQ(refused(100'000, 100, false), error);
    EXPECT_EQ(refused(98'049, 1, false), error);
    EXPECT_EQ(refused(1000, 0, false), error);
    EXPECT_EQ(refused(0, 10, false), error);
    EXPECT_EQ(refused(-5, 10, false), error);
    EXPECT_EQ(refused(1000, 10, true), error);
}

}  // namespace
