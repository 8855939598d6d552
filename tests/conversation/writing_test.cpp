// Pictures that go into saver programs.
#include <vector>

#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"
#include "tests/modules/explicit_steps.h"

namespace {

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

TEST_F(Writing, BringsEverySizeChannelCountAndStepOfASaver) {
    const int sizes[][2] = {{1, 1}, {1, 35}, {35, 1}, {16, 17}, {37, 21}};
    Saver saver;
    int round = 0;
    for (const auto& size : sizes) {
        for (const char* form : kExplicitForms) {
            for (int channels = 1; channels <= VORN_MAX_CHANNELS; ++channels) {
                const int savedBytes = 1 + round % 2;
                const std::string wishes = std::string("form=") + form + ",sb=" + text(savedBytes) +
                                           ",lines=" + text(1 + round++ % 9);
                SCOPED_TRACE(text(size[0]) + "x" + text(size[1]) + "x" + text(channels) + wishes);
                const Picture picture = source({size[0], size[1], channels, pick(random_, 1, 2)});
                ASSERT_TRUE(saver.open(target()));
                saver.describe(picture, VORN_CS_NONE, wishes);
                ASSERT_TRUE(saver.write(picture)) << saver.code();
                const Picture pattern = plainPicture({size[0], size[1], channels, savedBytes});
                ASSERT_TRUE(
                    same(Saved(target()).picture(), converted(pattern, picture, 0, nullptr)));
                saver.closeImage();
            }
        }
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
                ASSERT_TRUE(saver.write(picture)) << saver.code();
                const Saved saved(target());
                EXPECT_EQ(saved.toldNumber(ITAG_Channels), c.toldChannels);
                EXPECT_EQ(saved.toldNumber(ITAG_ColorSpace), c.toldSpace);
                const Picture pattern = plainPicture({23, 11, c.toldChannels, bytes});
                ASSERT_TRUE(same(saved.picture(), converted(pattern, picture, c.code, nullptr)));
            }
            saver.closeImage();
        }
    }
}

TEST_F(Writing, TellsTheSizeAndTheAspectAsTheSaverSeesThem) {
    Saver saver("saver-1");
    const Picture picture = source({7, 4, 3, 1});
    ASSERT_TRUE(saver.open(target()));
    saver.describe(picture, VORN_CS_RGB, "", 0);
    VORN_H_ImageVaSetTags(saver, ITAG_XDPI, VORN_Word(72), ITAG_YDPI, VORN_Word(144), ITAG_XAspect,
                          VORN_Word(4), ITAG_YAspect, VORN_Word(2), ITAG_Description,
                          VORN_Word("leaf"), TAG_End);
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
    Saver saver;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shape.width);
        const Picture picture = source(c.shape);
        ASSERT_TRUE(saver.open(target()));
        saver.describe(picture, VORN_CS_NONE, "blocks=1");
        Calls calls;
        ASSERT_TRUE(saver.write(picture, calls.tags(c.meter))) << saver.code();
        int line = 0;
        for (const SavedBlock& block : Saved(target()).blocks()) {
            EXPECT_EQ(block.firstLine, line);
            EXPECT_EQ(block.lines, std::min(c.linesPerBlock, c.shape.height - line));
            EXPECT_EQ(block.channels, c.shape.channels);
            EXPECT_EQ(block.bytes, (block.lines * c.lineBytes + 3) / 4 * 4);
            line += block.lines;
        }
        EXPECT_EQ(line, c.shape.height);
        EXPECT_EQ(calls.counts.size(), c.meter ? 16u : 0u);
        saver.closeImage();
    }
}

// Each row is one way to fail; the old target stays, nothing lies beside it, and the same saver
// then writes the next picture.
TEST_F(Writing, LeavesTheOldTargetWhenItFails) {
    const struct {
        const char *what, *wishes;
        Shape shape;
        int code;
    } cases[] = {
        {"the saver refuses to open", "fail=open,code=2003", {16, 100, 3, 1}, 2003},
        {"or to begin", "fail=begin,code=2004", {16, 100, 3, 1}, 2004},
        {"or to take anything", "fail=write,code=2005", {16, 100, 3, 1}, 2005},
        {"or more than two blocks", "fail=write,failat=6,lines=1,code=2006", {16, 100, 3, 1}, 2006},
        {"or the last line", "fail=write,failat=99,lines=1,code=2007", {16, 100, 3, 1}, 2007},
        {"a line is too wide", "", {49025, 2, 2, 1}, 29},
        {"in 16 bits too", "", {6129, 2, 8, 2}, 29},
        {"no width", "no width", {16, 100, 3, 1}, 34},
        {"another width", "another width", {16, 100, 3, 1}, 0},
        {"a width out of bounds", "wide", {16, 100, 3, 1}, 26},
        {"a buffer that is none", "type", {16, 100, 3, 1}, 60},
        {"the abort callback", "abort", {16, 100, 3, 1}, 27},
    };
    Saver saver;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string wishes = c.wishes;
        const Picture picture = source(c.shape);
        ASSERT_TRUE(saver.open(leaveOldTarget()));
        if (wishes != "no width")
            saver.describe(picture, VORN_CS_NONE,
                           wishes.find('=') != std::string::npos ? wishes : "");
        if (wishes == "another width")
            VORN_H_ImageVaSetTags(saver, ITAG_Width, VORN_Word(17), TAG_End);
        if (wishes == "wide") VORN_H_ImageVaSetTags(saver, ITAG_Width, VORN_Word(65537), TAG_End);
        VORN_ImageBuffer buffer = bufferOf(picture);
        if (wishes == "type") buffer.type = 0;
        Calls calls;
        calls.stopAt = wishes == "abort" ? 3 : 0;
        const auto tags = calls.tags(true);  // the meter makes small blocks
        EXPECT_FALSE(VORN_H_ImageWriteData(saver, &buffer, tags.data()));
        EXPECT_EQ(saver.code(), c.code);
        EXPECT_TRUE(oldTargetIsAsItWas());
        ASSERT_TRUE(saver.closeImage());

        const Picture next = source({9, 9, 3, 1});
        ASSERT_TRUE(saver.open(target()));
        saver.describe(next, VORN_CS_RGB);
        ASSERT_TRUE(saver.write(next)) << saver.code();
        EXPECT_TRUE(same(Saved(target()).picture(), inMemoryOf(plainPicture({9, 9, 3, 1}), next)));
        saver.closeImage();
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
        saver.closeImage();
    }
}

TEST_F(Writing, NeedsASaverThatAnswers) {
    Saver saver("mute");
    EXPECT_FALSE(saver.open(target()));
    EXPECT_EQ(saver.code(), 5);
    EXPECT_FALSE(saver.open(target()));
    EXPECT_EQ(saver.code(), 5);
}

}  // namespace
