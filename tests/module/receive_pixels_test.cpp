#include <gtest/gtest.h>

#include <memory>

#include "support/memory.h"
#include "tests/module/twin.h"

namespace {

constexpr int32_t kWidth = 3;

// Samples that are ten times the line's number and the column.
Bytes samplesOf(int32_t first, int32_t lines) {
    Bytes samples;
    for (int32_t line = first; line < first + lines; ++line) {
        for (int32_t x = 0; x < kWidth; ++x) samples.push_back(static_cast<uint8_t>(line * 10 + x));
    }
    return samples;
}

Bytes block(int32_t first, int32_t lines) {
    const Bytes samples = samplesOf(first, lines);
    return MessageBytes()
        .number(ITAG_ReadLineNo, first)
        .format(formatOf(DF_LineInterleaved8, kWidth, lines, 1))
        .data(ITAG_Data, samples.data(), samples.size())
        .end();
}

// What a saver's buffer for so many lines takes out of its messages.
Bytes taken(VORN_ImageDataState* state, int32_t count) {
    Bytes samples(static_cast<size_t>(count * kWidth), 0xEE);
    VORN_ChunkyBuffer buffer{DF_LineInterleaved8, kWidth, count, 1, 0, 0, {}, {}, {}, {}};
    buffer.channelPlace[0] = samples.data();
    VORN_L_ChunkyBufferMacroSetup(&buffer);
    const int32_t got = VORN_M_GetImageData(&buffer, state);
    for (size_t i = static_cast<size_t>(got * kWidth); i < samples.size(); ++i)
        EXPECT_EQ(samples[i], 0xEE);
    samples.resize(static_cast<size_t>(got * kWidth));
    return samples;
}

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
        EXPECT_EQ(taken(state, 10), samplesOf(0, 10));
        EXPECT_EQ(taken(state, 4), samplesOf(10, 2));
        EXPECT_EQ(taken(state, 4), Bytes());  // ended: no wait
    });
}

TEST(GetImageData, EndsAtAMessageThatIsNoBlock) {
    const VORN_DataFormat format = formatOf(DF_LineInterleaved8, kWidth, 1, 1);
    const Bytes messages[] = {
        MessageBytes().number(ITAG_ReadLineNo, 0).data(ITAG_Data, "abcd", 4).end(),
        MessageBytes().format(format).end(),
        MessageBytes().data(ITAG_DataFormat, &format, 124).data(ITAG_Data, "abcd", 4).end(),
    };
    for (const Bytes& message : messages) {
        writeWith({message}, [](auto* state) {
            EXPECT_EQ(taken(state, 1), Bytes());
            EXPECT_EQ(taken(state, 1), Bytes());
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
    const struct {
        Bytes message = paletteMessage();
        int32_t width = 4, channels = 3, bytes = 1;  // of the buffer
    } cases[] = {
        {.width = 1},
        {.channels = 4},
        {.bytes = 2},
        {.message = paletteMessage(4)},  // fewer bytes than told
        {.message = MessageBytes().number(ITAG_Width, 1).end()},
        {.message = MessageBytes().data(ITAG_Palette, "abcd", 4).end()},
    };
    for (const auto& c : cases) {
        Entries entries;
        entries.buffer.width = c.width;
        entries.buffer.channels = c.channels;
        entries.buffer.bytesPerChannel = c.bytes;
        const VORN_ChunkyBuffer before = entries.buffer;
        EXPECT_FALSE(entries.take(c.message, VORN_CS_RGB)) << &c - cases;
        EXPECT_EQ(std::memcmp(&before, &entries.buffer, sizeof before), 0) << &c - cases;
        EXPECT_EQ(entries.samples[0], 9);
    }
}

}  // namespace
