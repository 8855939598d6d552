#include <gtest/gtest.h>

#include <memory>

#include "support/memory.h"
#include "tests/module/twin.h"

namespace {

constexpr int32_t kWidth = 3;

VORN_DataFormat grayFormat(int32_t height) {
    return formatOf(DF_LineInterleaved8, kWidth, height, 1);
}

// A block of lines whose samples are ten times the line's number and the column.
Bytes block(int32_t first, int32_t lines) {
    Bytes samples;
    for (int32_t line = first; line < first + lines; ++line) {
        for (int32_t x = 0; x < kWidth; ++x) samples.push_back(static_cast<uint8_t>(line * 10 + x));
    }
    return MessageBytes()
        .number(ITAG_ReadLineNo, first)
        .format(grayFormat(lines))
        .data(ITAG_Data, samples.data(), samples.size())
        .end();
}

// A saver's buffer for some lines of the picture.
struct Lines {
    explicit Lines(int32_t count) : samples(static_cast<size_t>(count * kWidth), 0xEE) {
        buffer.width = kWidth;
        buffer.height = count;
        buffer.channels = buffer.bytesPerChannel = buffer.pixelStep[0] = 1;
        buffer.lineStep[0] = kWidth;
        buffer.channelPlace[0] = samples.data();
    }
    void expectLine(int32_t place, int32_t line) const {
        for (int32_t x = 0; x < kWidth; ++x) {
            EXPECT_EQ(samples[static_cast<size_t>(place * kWidth + x)], line * 10 + x);
        }
    }

    std::vector<uint8_t> samples;
    VORN_ChunkyBuffer buffer{};
};

// A saver that takes the lines of these messages like this.
void writeWith(const std::vector<Bytes>& messages,
               const std::function<void(VORN_ImageDataState*)>& write) {
    Callbacks callbacks = plainSaver();
    callbacks.saverWrite = [&] {
        VORN_ImageDataState* state = VORN_M_CreateGetImageDataState();
        write(state);
        VORN_M_DestroyImageDataState(state);
        return 1;
    };
    std::vector<Turn> turns = {{command(CMD_SaveData), {emptyMessage()}}};
    for (const Bytes& message : messages) turns.push_back({message, {}});
    turns.push_back({interrupt(), {acknowledgementOf(2)}});
    converse(VORN_SAVER, callbacks, turns);
}

TEST(GetImageData, TakesLinesAcrossBlocksAndNoneBehindTheLast) {
    writeWith({block(0, 4), block(4, 4), block(8, 0), block(8, 4)}, [](auto* state) {
        Lines ten(10);
        EXPECT_EQ(VORN_M_GetImageData(&ten.buffer, state), 10);
        for (int32_t line = 0; line < 10; ++line) ten.expectLine(line, line);
        Lines rest(4);  // two are left
        EXPECT_EQ(VORN_M_GetImageData(&rest.buffer, state), 2);
        rest.expectLine(0, 10);
        rest.expectLine(1, 11);
        EXPECT_EQ(rest.samples[2 * kWidth], 0xEE);
        EXPECT_EQ(VORN_M_GetImageData(&rest.buffer, state), 0);  // ended: no wait
    });
}

TEST(GetImageData, EndsAtAMessageThatIsNoBlock) {
    const VORN_DataFormat format = grayFormat(1);
    const Bytes messages[] = {
        MessageBytes().number(ITAG_ReadLineNo, 0).data(ITAG_Data, "abcd", 4).end(),
        MessageBytes().format(format).end(),
        MessageBytes().data(ITAG_DataFormat, &format, 124).data(ITAG_Data, "abcd", 4).end(),
    };
    for (const Bytes& message : messages) {
        writeWith({message}, [](auto* state) {
            Lines one(1);
            EXPECT_EQ(VORN_M_GetImageData(&one.buffer, state), 0);
            EXPECT_EQ(VORN_M_GetImageData(&one.buffer, state), 0);
            EXPECT_EQ(one.samples[0], 0xEE);
        });
    }
}

TEST(GetImageData, WithoutMemoryForItsStateIsErrorSeventeen) {
    Callbacks callbacks = plainSaver();
    callbacks.saverWrite = [] {
        vorn::failAllocation(1);
        EXPECT_EQ(VORN_M_CreateGetImageDataState(), nullptr);
        VORN_M_DestroyImageDataState(nullptr);
        return 1;
    };
    converse(VORN_SAVER, callbacks,
             {{command(CMD_SaveData), {emptyMessage()}},
              {interrupt(), {acknowledgementWithError(2, 17, 0)}}});
}

// ---- Palettes, which need no connection.

constexpr int32_t kEntries = 2;

Bytes paletteMessage(size_t entryBytes = kEntries * 3) {
    Bytes entries{255, 255, 255, 3, 4, 5};
    entries.resize(entryBytes);
    return MessageBytes()
        .number(ITAG_Width, 1)
        .palette(formatOf(DF_Chunky3x8, kEntries, 1, 3), entries)
        .end();
}

struct Entries {
    Entries() {
        buffer.channelPlace[0] = samples;
        VORN_L_ChunkyBufferMacroSetup(&buffer);
    }
    bool take(const Bytes& message, int32_t colorSpace) {
        return VORN_M_GetPalette(reinterpret_cast<const VORN_TagItem*>(message.data()), &buffer,
                                 colorSpace);
    }

    uint8_t samples[12] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    VORN_ChunkyBuffer buffer{DF_Chunky3x8, 4, 1, 3, 0, 0, {}, {}, {}, {}};
};

TEST(GetPalette, FillsTheEntriesInTheAskedColorSpaceAndTellsTheirNumber) {
    Entries entries;
    EXPECT_TRUE(entries.take(paletteMessage(), VORN_CS_RGB));
    EXPECT_EQ(entries.buffer.width, kEntries);
    const uint8_t expected[] = {255, 255, 255, 3, 4, 5, 9};
    EXPECT_EQ(std::memcmp(entries.samples, expected, sizeof expected), 0);
    EXPECT_TRUE(entries.take(paletteMessage(), VORN_CS_YUV601));
    EXPECT_EQ(entries.samples[0], 235);
    EXPECT_EQ(entries.samples[1], 128);
}

TEST(GetPalette, LeavesTheBufferAloneWhenItDoesNotSuit) {
    const auto refused = [](const Bytes& message, int32_t VORN_ChunkyBuffer::*field,
                            int32_t value) {
        Entries entries;
        entries.buffer.*field = value;
        const VORN_ChunkyBuffer before = entries.buffer;
        EXPECT_FALSE(entries.take(message, VORN_CS_RGB));
        EXPECT_EQ(std::memcmp(&before, &entries.buffer, sizeof before), 0);
        EXPECT_EQ(entries.samples[0], 9);
    };
    const Bytes palette = paletteMessage();
    refused(palette, &VORN_ChunkyBuffer::width, 1);
    refused(palette, &VORN_ChunkyBuffer::channels, 4);
    refused(palette, &VORN_ChunkyBuffer::bytesPerChannel, 2);
    refused(MessageBytes().number(ITAG_Width, 1).end(), &VORN_ChunkyBuffer::width, 4);
    refused(paletteMessage(4), &VORN_ChunkyBuffer::width, 4);  // fewer bytes than told
    refused(MessageBytes().data(ITAG_Palette, "abcd", 4).end(), &VORN_ChunkyBuffer::width, 4);
}

}  // namespace
