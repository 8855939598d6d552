// Pictures that go into saver programs.
#include <vector>

#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"
#include "tests/modules/explicit_steps.h"
#include "tests/transport/scripted_peer.h"

namespace {

using vorn::test::oneOf;
using vorn::test::pick;

std::string text(int value) { return std::to_string(value); }

class Writing : public ConversationTest {
  protected:
    void SetUp() override {
        ConversationTest::SetUp();
        moduleHome().remove("target");
        moduleHome().makeDirectory("target");
    }

    static std::string target() { return moduleHome().path("target/saved"); }

    // Any memory of the host, filled.
    Picture source(const Shape& shape) {
        Picture picture = Picture::any(random_, shape);
        picture.fill(random_);
        return picture;
    }

    static std::string leaveOldTarget() { return moduleHome().write("target/saved", "old"); }
    static bool oldTargetIsAsItWas() {
        const std::filesystem::directory_iterator files(moduleHome().path("target"));
        EXPECT_EQ(std::distance(files, {}), 1);
        return moduleHome().read("target/saved") == "old";
    }

    Random random_{31};
};

TEST_F(Writing, BringsAnyMemoryOfTheHostIntoAnyMemoryOfASaver) {
    const int sizes[] = {1, 2, 16, 21, 37};
    Saver saver;
    for (int round = 0; round < 400; ++round) {
        const Picture picture = source({oneOf(random_, sizes), oneOf(random_, sizes),
                                        pick(random_, 1, VORN_MAX_CHANNELS), pick(random_, 1, 2)});
        Shape saved = shapeOf(picture);
        saved.bytes = pick(random_, 1, 2);
        const std::string wishes = std::string("form=") + kExplicitForms[round % 8] +
                                   ",sb=" + text(saved.bytes) +
                                   ",lines=" + text(pick(random_, 1, 9));
        ASSERT_TRUE(saver.open(target()));
        saver.describe(picture, VORN_CS_NONE, wishes);
        ASSERT_TRUE(saver.write(picture)) << saver.error() << wishes;
        ASSERT_TRUE(
            same(Saved(target()).picture(), converted(plainPicture(saved), picture, 0, nullptr)))
            << round << wishes;
    }
}

TEST_F(Writing, ConvertsToColoursThatTheSaverKnowsAndTellsIt) {
    const struct {
        const char *saver, *spaces;
        int channels, space, code, toldChannels, toldSpace;
    } cases[] = {
        {"saverGray", "Gray", 3, VORN_CS_RGB, 1, 1, VORN_CS_GRAY},
        {"saverGray", "Gray", 4, VORN_CS_RGB, 1, 2, VORN_CS_GRAY},
        {"saverGray", "Gray", 3, VORN_CS_YUV601, 3, 1, VORN_CS_GRAY},
        {"saverGray", "Gray", 2, VORN_CS_GRAY, 0, 2, VORN_CS_GRAY},
        {"saverRGB", "RGB,Gray", 1, VORN_CS_GRAY, 0, 1, VORN_CS_GRAY},
        {"saverOnlyRGB", "RGB", 1, VORN_CS_GRAY, 2, 3, VORN_CS_RGB},
        {"saverOnlyRGB", "RGB", 2, VORN_CS_GRAY, 2, 4, VORN_CS_RGB},
        {"saverOnlyRGB", "RGB", 4, VORN_CS_YUV601, 5, 4, VORN_CS_RGB},
        {"saverYUV", "YUV601", 3, VORN_CS_RGB, 6, 3, VORN_CS_YUV601},
        {"saverYUV", "YUV601", 2, VORN_CS_GRAY, 4, 4, VORN_CS_YUV601},
        {"saverInk", "CMYK,RGB", 4, VORN_CS_CMYK, 0, 4, VORN_CS_CMYK},
    };
    for (const auto& c : cases) {
        Saver saver(c.saver, c.spaces);
        for (int bytes = 1; bytes <= 2; ++bytes) {
            SCOPED_TRACE(std::string(c.saver) + " " + text(c.channels) + " of " + text(c.space) +
                         " in " + text(bytes));
            const Picture picture = source({23, 11, c.channels, bytes});
            ASSERT_TRUE(saver.open(target()));
            saver.describe(picture, c.space);
            // The same image twice: the second write starts from the same truth.
            for (int time = 0; time < 2; ++time) {
                ASSERT_TRUE(saver.write(picture)) << saver.error();
                const Saved saved(target());
                EXPECT_EQ(saved.toldNumber(ITAG_Channels), c.toldChannels);
                EXPECT_EQ(saved.toldNumber(ITAG_ColorSpace), c.toldSpace);
                const Picture pattern = plainPicture({23, 11, c.toldChannels, bytes});
                ASSERT_TRUE(same(saved.picture(), converted(pattern, picture, c.code, nullptr)));
            }
        }
    }
}

TEST_F(Writing, TellsTheSizeAndTheAspectAsTheSaverSeesThem) {
    Saver saver("saver-1");
    const Picture picture = source({7, 4, 3, 1});
    ASSERT_TRUE(saver.open(target()));
    saver.describe(picture, VORN_CS_RGB, "", 0);
    saver.set(ITAG_XDPI, 72, ITAG_YDPI, 144, ITAG_XAspect, 4, ITAG_YAspect, 2, ITAG_Description,
              "leaf");
    ASSERT_TRUE(saver.write(picture));
    const Saved saved(target());
    EXPECT_EQ(saved.toldNumber(ITAG_Width), 4);
    EXPECT_EQ(saved.toldNumber(ITAG_Height), 7);
    EXPECT_EQ(saved.toldNumber(ITAG_XDPI), 144);
    EXPECT_EQ(saved.toldNumber(ITAG_XAspect), 2);
    EXPECT_EQ(saved.toldNumber(ITAG_YAspect), 4);
    EXPECT_EQ(VORN_L_TagGetDoubleVal(VORN_L_TagFind(saved.told(), ITAG_Aspect)), 0.5);
    char description[8];
    EXPECT_STREQ(VORN_L_CopyTagStringOrNull(saved.told(), ITAG_Description, description, 8),
                 "leaf");
}

TEST_F(Writing, SendsBlocksOfWholeLinesThatFitAndMoveTheMeter) {
    const struct {
        Shape shape;
        bool meter;
        int linesPerBlock, lineBytes;
    } cases[] = {
        {{1000, 100, 3, 1}, false, 32, 3000},
        {{16, 10, 3, 1}, false, 10, 48},
        {{16, 100, 3, 1}, true, 3, 48},
        {{49024, 3, 2, 1}, false, 1, 98048},  // the widest line
        {{65536, 3, 1, 1}, false, 1, 65536},
        {{6128, 3, 8, 2}, true, 1, 98048},
        {{5, 1, 3, 2}, true, 1, 30},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shape.width);
        const Picture picture = source(c.shape);
        ScriptedPeer peer(VORN_SAVER);
        peer.image()->hasProcess = true;
        VORN_H_ImageVaSetTags(peer.image(), ITAG_Width, VORN_Word(c.shape.width), ITAG_Height,
                              VORN_Word(c.shape.height), TAG_End);
        const int blocks = (c.shape.height + c.linesPerBlock - 1) / c.linesPerBlock;
        peer.takes().sends(emptyMessage());
        for (int block = 0; block <= blocks; ++block) peer.takes();  // and the end of the data
        peer.sends(acknowledgement());
        const VORN_ImageBuffer buffer = bufferOf(picture);
        Calls calls;
        const auto tags = calls.tags(c.meter);
        EXPECT_TRUE(
            peer.play([&] { return VORN_H_ImageWriteData(peer.image(), &buffer, tags.data()); }));
        for (int block = 0, line = 0; block < blocks; ++block, line += c.linesPerBlock) {
            const VORN_TagItem* message = peer.takenList(static_cast<size_t>(1 + block));
            VORN_DataFormat format;
            std::memcpy(&format, VORN_L_TagFind(message, ITAG_DataFormat) + 1, sizeof format);
            EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(message, ITAG_ReadLineNo)), line);
            EXPECT_EQ(format.height, std::min(c.linesPerBlock, c.shape.height - line));
            EXPECT_EQ(format.channels, c.shape.channels);
            EXPECT_EQ(VORN_L_TagFind(message, ITAG_Data)->length,
                      8u + static_cast<uint32_t>((format.height * c.lineBytes + 3) / 4 * 4));
        }
        EXPECT_EQ(calls.counts.size(), c.meter ? 16u : 0u);
    }
}

// Each row is one way to fail; the old target stays, nothing lies beside it, and the same saver
// then writes the next picture.
TEST_F(Writing, LeavesTheOldTargetWhenItFails) {
    const struct {
        const char *what, *wishes;
        int code;
        Shape shape = {16, 100, 3, 1};
        int describedWidth = 0;  // another one than the shape's; -1: none
        int bufferType = VORN_BUFFER_CHUNKY, stopAt = 0;
    } cases[] = {
        {"the saver refuses to open", "fail=open,code=2003", 2003},
        {"or to begin", "fail=begin,code=2004", 2004},
        {"or to take anything", "fail=write,code=2005", 2005},
        {"or more than two blocks", "fail=write,failat=6,lines=1,code=2006", 2006},
        {"or the last line", "fail=write,failat=99,lines=1,code=2007", 2007},
        {"a line is too wide", "", 29, {49025, 2, 2, 1}},
        {"in 16 bits too", "", 29, {6129, 2, 8, 2}},
        {"no width", "", 34, {16, 100, 3, 1}, -1},
        {"another width", "", 0, {16, 100, 3, 1}, 17},
        {"a width out of bounds", "", 26, {16, 100, 3, 1}, 65537},
        {"a buffer that is none", "", 60, {16, 100, 3, 1}, 0, 0},
        {"the abort callback", "", 27, {16, 100, 3, 1}, 0, VORN_BUFFER_CHUNKY, 3},
    };
    Saver saver;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Picture picture = source(c.shape);
        ASSERT_TRUE(saver.open(leaveOldTarget()));
        if (c.describedWidth >= 0) saver.describe(picture, VORN_CS_NONE, c.wishes);
        if (c.describedWidth > 0) saver.set(ITAG_Width, c.describedWidth);
        VORN_ImageBuffer buffer = bufferOf(picture);
        buffer.type = c.bufferType;
        Calls calls;
        calls.stopAt = c.stopAt;
        const auto tags = calls.tags(true);  // the meter makes small blocks
        EXPECT_FALSE(VORN_H_ImageWriteData(saver, &buffer, tags.data()));
        EXPECT_EQ(saver.error(), c.code);
        // Who takes nothing more gets nothing more, unless it is said only at the end.
        EXPECT_TRUE(calls.counts.size() < 16 || c.code == 2003 || c.code == 2007);
        EXPECT_TRUE(oldTargetIsAsItWas());
        ASSERT_TRUE(saver.close());

        const Picture next = source({9, 9, 3, 1});
        ASSERT_TRUE(saver.open(target()));
        saver.describe(next, VORN_CS_RGB);
        ASSERT_TRUE(saver.write(next)) << saver.error();
        EXPECT_TRUE(same(Saved(target()).picture(), inMemoryOf(plainPicture({9, 9, 3, 1}), next)));
    }
}

TEST_F(Writing, EndsWithASaverThatWantsNoMoreLines) {
    Saver saver;
    for (const int stop : {0, 1, 50, 99}) {
        const Picture picture = source({16, 100, 3, 1});
        ASSERT_TRUE(saver.open(leaveOldTarget()));
        saver.describe(picture, VORN_CS_RGB, "lines=1,stop=" + text(stop));
        EXPECT_TRUE(saver.write(picture));
        EXPECT_TRUE(oldTargetIsAsItWas());
    }
}

}  // namespace
