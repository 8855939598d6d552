#include <gtest/gtest.h>

#include "pixels/write_format.h"
#include "tests/pixels/grid.h"
#include "tests/pixels/slow_line_copy.h"
#include "tests/pixels/transfer_rig.h"

namespace vorn::test {
namespace {

std::pair<int, int> formatFor(int channels, unsigned code, const Picture* palette = nullptr) {
    const Picture buffer = Picture::standard(DF_LineInterleaved16, 10, 1, channels);
    VORN_DataFormat format;
    if (!makeBlockFormat(buffer.record, code, palette != nullptr ? &palette->record : nullptr,
                         format)) {
        return {0, 0};
    }
    EXPECT_EQ(format.channelPlace[format.channels - 1], 20u * unsigned(format.channels - 1));
    EXPECT_EQ(format.pixelStep[0], 2);
    EXPECT_EQ(format.layout, 0);
    EXPECT_EQ(format.bitsPerChannel[0], 0);
    return {format.channels, format.lineStep[0]};
}

TEST(BlockFormat, HasTheChannelsThatTheConversionMakes) {
    using Made = std::pair<int, int>;  // channels, line size
    EXPECT_EQ(formatFor(3, 1), Made(1, 20));
    EXPECT_EQ(formatFor(4, 1), Made(2, 40));
    EXPECT_EQ(formatFor(4, 0), Made(4, 80));
    EXPECT_EQ(formatFor(1, 2), Made(3, 60));
    EXPECT_EQ(formatFor(2, 4), Made(4, 80));
    EXPECT_EQ(formatFor(3, 6), Made(3, 60));
    EXPECT_EQ(formatFor(8, 0), Made(8, 160));
    const Picture palette = Picture::standard(DF_LineInterleaved8, 2, 1, 3);
    EXPECT_EQ(formatFor(1, 7, &palette), Made(3, 60));
    EXPECT_EQ(formatFor(2, 7, &palette), Made(4, 80));
    EXPECT_EQ(formatFor(1, 7), Made(0, 0)) << "nothing to look up in";
}

// A saver's end that has been opened for a picture.
class SaverPeer : public ScriptedPeer {
  public:
    SaverPeer() : ScriptedPeer(VORN_SAVER) { image()->hasProcess = true; }

    SaverPeer& hostTags(const Picture& picture) {
        VORN_H_ImageVaSetTags(image(), ITAG_Width, VORN_Word(picture.record.width), ITAG_Height,
                              VORN_Word(picture.record.height), ITAG_Channels,
                              VORN_Word(picture.record.channels), TAG_End);
        return *this;
    }
    bool write(const Picture& picture) {
        const VORN_ImageBuffer buffer = imageBuffer(picture);
        return play([&] { return VORN_H_ImageVaWriteData(image(), &buffer, TAG_End) != 0; });
    }
};

struct Block {
    explicit Block(const VORN_TagItem* message) {
        line = VORN_L_TagGetLongVal(VORN_L_TagFind(message, ITAG_ReadLineNo));
        std::memcpy(&format, itemData(VORN_L_TagFind(message, ITAG_DataFormat)), sizeof format);
        const VORN_TagItem* item = VORN_L_TagFind(message, ITAG_Data);
        bytes.assign(itemData(item), itemData(item) + itemDataSize(item));
    }
    int line;
    VORN_DataFormat format;
    Bytes bytes;
};

int commandOf(const VORN_TagItem* message) {
    const VORN_TagItem* item = VORN_L_TagFind(message, MTAG_Command);
    return item != nullptr ? VORN_L_TagGetLongVal(item) : 0;
}

TEST(WriteImage, SendsEverythingInOneBlockThatSaysItsFormat) {
    Random random(21);
    Picture picture = Picture::any(random, {10, 10, 3, 1});
    picture.fill(random);
    SaverPeer peer;
    peer.hostTags(picture).takes().sends(emptyReply()).takes().takes().sends(acknowledgement());
    EXPECT_TRUE(peer.write(picture));
    EXPECT_EQ(commandOf(peer.takenList(0)), CMD_SaveData);
    const Block block(peer.takenList(1));
    EXPECT_EQ(peer.taken().at(1).size(), 164u + 300u);
    EXPECT_EQ(block.line, 0);
    EXPECT_EQ(block.format.height, 10);
    for (int i = 0; i < 300; i++) {
        ASSERT_EQ(block.bytes[static_cast<size_t>(i)], picture.get(i / 10 % 3, i % 10, i / 30));
    }
    EXPECT_EQ(commandOf(peer.takenList(2)), CMD_Abort);
}

TEST(WriteImage, MirrorsReadingInEveryOrientation) {
    const Grid upright = Grid::counted(3, 4);
    for (int pair = 0; pair < 64; pair++) {
        const int ofSaver = pair / 8, ofHost = pair % 8;
        const Grid own = upright.oriented(ofHost);
        Picture host = Picture::standard(DF_LineInterleaved8, own.width, own.height, 1);
        for (int i = 0; i < own.width * own.height; i++) {
            host.set(0, i % own.width, i / own.width, own.values[static_cast<size_t>(i)]);
        }
        SaverPeer peer;
        peer.hostTags(host);
        VORN_H_ImageVaSetTags(peer.image(), ITAG_Orientation, VORN_Word(ofHost), TAG_End);
        ImageVaAddTags(peer.image(), ITAG_Orientation, VORN_Word(ofSaver), TAG_End);
        peer.takes().sends(emptyReply()).takes().takes().sends(acknowledgement());
        ASSERT_TRUE(peer.write(host)) << ofHost << " to " << ofSaver;

        const Grid wanted = upright.oriented(ofSaver);
        const Block block(peer.takenList(1));
        const Grid got{
            block.format.width, block.format.height, {block.bytes.begin(), block.bytes.end()}};
        EXPECT_EQ(got, wanted) << ofHost << " to " << ofSaver;
        const VORN_TagItem* width = VORN_L_TagFind(peer.takenList(0), ITAG_Width);
        EXPECT_EQ(VORN_L_TagGetLongVal(width), wanted.width) << "what the saver was told";
    }
}

TEST(WriteImage, SendsSmallBlocksForTheMeter) {
    Picture picture = Picture::standard(DF_LineInterleaved8, 2, 100, 1);
    SaverPeer peer;
    peer.hostTags(picture).takes().sends(emptyReply());
    for (int i = 0; i < 34; i++) {
        peer.takes();
    }
    peer.takes().sends(acknowledgement());
    std::vector<int> counts;
    const auto meter = +[](VORN_Image*, VORN_Word data, int32_t count) {
        reinterpret_cast<std::vector<int>*>(data)->push_back(count);
    };
    const VORN_ImageBuffer buffer = imageBuffer(picture);
    EXPECT_TRUE(peer.play([&] {
        return VORN_H_ImageVaWriteData(peer.image(), &buffer, ITAG_MeterCallback, VORN_Word(meter),
                                       ITAG_MeterCallbackUserData, VORN_Word(&counts), TAG_End);
    }));
    ASSERT_EQ(counts.size(), 16u);
    EXPECT_EQ(counts.back(), 16);
    EXPECT_EQ(Block(peer.takenList(3)).line, 6);
    EXPECT_EQ(Block(peer.takenList(34)).line, 99);
    EXPECT_EQ(Block(peer.takenList(34)).format.height, 1);
}

TEST(WriteImage, FillsTheAreaAndNotMore) {
    Picture picture = Picture::standard(DF_Chunky3x8, 1000, 40, 3);
    SaverPeer peer;
    EXPECT_EQ(VORN_L_WriteImageDataMaxSize(peer.image()), 97280);
    peer.hostTags(picture).takes().sends(emptyReply()).takes().takes().takes();
    peer.sends(acknowledgement());
    EXPECT_TRUE(peer.write(picture));
    EXPECT_EQ(Block(peer.takenList(1)).format.height, 32);
    EXPECT_EQ(Block(peer.takenList(2)).line, 32);
}

TEST(WriteImage, TakesTheWidestLineThatFits) {
    for (int extra = 0; extra <= 1; extra++) {
        const int width = (98304 - 256) / 2 + extra;
        Picture picture = Picture::standard(DF_LineInterleaved16, width, 1, 1);
        SaverPeer peer;
        peer.hostTags(picture).takes().sends(emptyReply()).takes();
        if (extra == 0) {
            peer.takes();
        }
        peer.sends(acknowledgement());
        EXPECT_EQ(peer.write(picture), extra == 0);
        EXPECT_EQ(peer.errorCode(), extra == 0 ? 0 : 29);
    }
}

TEST(WriteImage, RefusesOtherBuffersAndSizes) {
    Picture picture = Picture::standard(DF_LineInterleaved8, 4, 4, 1);
    Picture larger = Picture::standard(DF_LineInterleaved8, 5, 4, 1);
    SaverPeer peer;
    peer.hostTags(picture).takes().sends(emptyReply()).takes().sends(acknowledgement());
    EXPECT_FALSE(peer.write(larger));
    EXPECT_EQ(peer.errorCode(), 0);

    VORN_ImageBuffer buffer = imageBuffer(picture);
    buffer.type = 0;
    peer.takes().sends(acknowledgement());
    EXPECT_FALSE(
        peer.play([&] { return VORN_H_ImageVaWriteData(peer.image(), &buffer, TAG_End); }));
    EXPECT_EQ(peer.errorCode(), 60);
}

TEST(WriteImage, ReportsTheSaversError) {
    Picture picture = Picture::standard(DF_LineInterleaved8, 4, 4, 1);
    SaverPeer peer;
    peer.hostTags(picture).takes().sends(MessageBytes().error(2001, 28).end());
    peer.takes().sends(acknowledgement());
    EXPECT_FALSE(peer.write(picture));
    EXPECT_EQ(peer.errorCode(), 2001);
}

// The steps of a transfer one by one.
class WriteLines : public testing::Test {
  protected:
    WriteLines() : state_(begin()) {}
    ~WriteLines() override { VORN_L_ImageWriteChunkyEnd(state_); }

    VORN_WriteState* begin() {
        return VORN_L_ImageWriteChunkyBegin(peer_.image(), &lines_.record, nullptr, 0, nullptr);
    }
    int send(int first) { return VORN_L_ImageWriteLineChunky(state_, &lines_.record, first); }

    Picture lines_ = Picture::standard(DF_Chunky4x8, 3, 2, 4);
    SaverPeer peer_;
    VORN_WriteState* state_;
};

TEST_F(WriteLines, SendNothingAfterTheSaversError) {
    EXPECT_EQ(VORN_L_GetLineSize(state_), 12);
    peer_.takes().takes().sends(MessageBytes().error(2001, 0).end());
    EXPECT_EQ(peer_.play([&] { return send(0) + send(2); }), 4);
    EXPECT_EQ(send(4), 0);
    EXPECT_EQ(peer_.errorCode(), 2001);
    EXPECT_EQ(peer_.taken().size(), 2u);
}

TEST_F(WriteLines, SendNothingAfterANonsensicalMessage) {
    peer_.sends(MessageBytes().item(ITAG_Width, 4).unfinished());
    peer_.play([] { return true; });
    EXPECT_EQ(send(0), 0);
    EXPECT_EQ(peer_.errorCode(), 5);
}

TEST_F(WriteLines, SendNothingWithoutAModuleProgram) {
    VORN_L_ShutDownHandle(peer_.image());
    EXPECT_EQ(send(0), 0);
    EXPECT_EQ(peer_.errorCode(), 4);
}

TEST_F(WriteLines, ConvertColorsOnTheWay) {
    Random random(22);
    lines_.fill(random);
    peer_.image()->colorConversion = 1;
    VORN_L_ImageWriteChunkyEnd(state_);
    state_ = begin();
    peer_.takes();
    EXPECT_EQ(peer_.play([&] { return send(0); }), 2);
    const Block block(peer_.takenList(0));
    ASSERT_EQ(block.format.channels, 2);
    Picture expected = Picture::standard(DF_LineInterleaved8, 3, 2, 2);
    for (int y = 0; y < 2; y++) {
        slowLineCopy(lines_, expected, y, y, 1, nullptr);
        for (int x = 0; x < 6; x++) {
            EXPECT_EQ(block.bytes[static_cast<size_t>(y * 6 + x)], expected.get(x / 3, x % 3, y));
        }
    }
}

}  // namespace
}  // namespace vorn::test
