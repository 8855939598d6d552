// Pictures that come out of loader programs.
#include <unistd.h>
#include <vorn/support.h>

#include <fstream>

#include "tests/conversation/host.h"
#include "tests/modules/explicit_steps.h"
#include "tests/pixels/slow_line_copy.h"

namespace {

using vorn::test::oneOf;
using vorn::test::pick;

using Reading = ConversationTest;

std::string text(int value) { return std::to_string(value); }

std::string named(const Shape& shape, const std::string& more) {
    return "w=" + text(shape.width) + ",h=" + text(shape.height) + ",c=" + text(shape.channels) +
           ",b=" + text(shape.bytes) + "," + more;
}

// A block's layout: one with a code that allows the channels, or steps of its own.
std::string anyLayout(Random& random, const Shape& shape) {
    const int mostChannels[] = {0, 8, 4, 3};
    const int code = pick(random, 0, 3);
    if (shape.channels > mostChannels[code])
        return std::string("form=") + oneOf(random, kExplicitForms);
    return "layout=" + text(code + 3 * (shape.bytes - 1));
}

// Any memory of the host, any layout of the loader, any sizes, and the colours that go with the
// channels; every byte that belongs to no sample stays as it was.
TEST_F(Reading, FillsAnyMemoryOfTheHostFromAnyLayoutOfTheLoader) {
    const struct {
        int channels, space;
    } sources[] = {{1, VORN_CS_GRAY}, {2, VORN_CS_GRAY},   {3, VORN_CS_RGB},
                   {4, VORN_CS_RGB},  {3, VORN_CS_YUV601}, {4, VORN_CS_YUV601},
                   {4, VORN_CS_CMYK}, {3, VORN_CS_CMY},    {0, VORN_CS_NONE}};
    const char* spaces[] = {"None", "Gray", "RGB", "YUV", "YUV601", "CMY", "CMYK"};
    const int wishes[] = {-1, VORN_CS_NONE, VORN_CS_GRAY, VORN_CS_RGB, VORN_CS_YUV601};
    const int sizes[] = {1, 2, 7, 16, 17, 35, 40};
    Random random(2024);
    Loader loader;
    for (int round = 0; round < 900; ++round) {
        const auto& source = sources[round % std::size(sources)];
        const int wish = oneOf(random, wishes);
        const Shape shape{oneOf(random, sizes), oneOf(random, sizes),
                          source.channels ? source.channels : pick(random, 1, VORN_MAX_CHANNELS),
                          pick(random, 1, 2)};
        const std::string name =
            named(shape, std::string("space=") + spaces[source.space] + ",block=" +
                             text(pick(random, 0, 9)) + ",inplace=" + text(pick(random, 0, 1)) +
                             ",seed=" + text(round) + "," + anyLayout(random, shape));
        ASSERT_TRUE(loader.open(name)) << name;
        if (wish >= 0) loader.set(ITAG_ColorSpace, wish);
        Picture target = Picture::any(
            random,
            {shape.width, shape.height, pick(random, 1, VORN_MAX_CHANNELS), pick(random, 1, 2)});
        if (pick(random, 0, 3) == 0) target.drop(pick(random, 0, target.record.channels - 1));
        uint32_t code = 0;
        if (wish >= 0) VORN_L_SetColorSpaceCorrection(&code, source.space, wish);
        const Picture expected =
            converted(target, loadersPicture(name), static_cast<int>(code), nullptr);
        ASSERT_TRUE(loader.read(target)) << name;
        ASSERT_TRUE(same(target, expected)) << name << ", wish " << wish << ", code " << code;
    }
}

TEST_F(Reading, TellsTheLoaderWhatTheSystemHas) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=6,h=6"));
    std::ifstream line("/proc/" + text(loader.program()) + "/cmdline");
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(line, argument, '\0');) arguments.push_back(argument);
    ASSERT_EQ(arguments.size(), 19u);
    EXPECT_EQ(arguments[1] == "VORN", OSEqualWin162() != 0) << arguments[1];
    const int first = std::atoi(arguments[2].c_str());
    for (int i = 0; i < 6 && OSEqualWin162(); ++i) {
        EXPECT_EQ(arguments[static_cast<size_t>(2 + 2 * i)], text(first + i));
        EXPECT_EQ(arguments[static_cast<size_t>(3 + 2 * i)], text(i) + "VN");
    }
    EXPECT_EQ(arguments[18], text(::getpid()));
}

// Each row is a picture, the error that it is refused with (0: it comes) and that error's subcode.
TEST_F(Reading, BringsThePictureOrTheReasonAndServesTheNextOne) {
    const struct {
        const char* name;
        int code = 0, subcode = 0;
    } cases[] = {
        {"w=49024,h=3,c=2"},  // the widest line: 98,048 bytes
        {"w=6128,h=2,c=8,b=2"},
        {"w=65536,h=2,c=1,inplace=1"},
        {"w=49120,h=2,c=2,inplace=1"},  // all that the area holds besides the tags
        {"w=2,h=50000,c=1,block=1"},    // a hundred thousand turns
        {"w=49025,h=3,c=2", 17},
        {"w=49121,h=2,c=2,inplace=1", 29},
        {"w=65537,h=1,c=1", 31},
        {"w=1,h=65537,c=1", 31},
        {"fail=open", 2001},
        {"fail=open,code=134217750,subcode=5", 0x08000016, 5},
        {"fail=begin,code=2007,subcode=-3", 2007, -3},
        {"fail=read,code=2", 2},
        {"h=40,fail=read,failat=10,block=4,code=2008,subcode=1", 2008, 1},
    };
    Loader loader;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(loader.reads(c.name), c.code == 0);
        EXPECT_EQ(loader.error(), c.code);
        EXPECT_EQ(loader.subcode(), c.subcode);
        EXPECT_TRUE(loader.close());
        EXPECT_EQ(loader.error(), 0);
        ASSERT_TRUE(loader.reads("w=9,h=9"));
    }
}

TEST_F(Reading, LooksUpPalettesOrKeepsTheIndices) {
    const struct {
        const char* name;
        int wish, channels, bytes, code;
    } cases[] = {
        {"palette=16", VORN_CS_RGB, 3, 1, 7},
        {"palette=16", VORN_CS_RGB, 3, 2, 7},
        {"palette=200,palbytes=2", VORN_CS_RGB, 3, 1, 7},
        {"palette=200", VORN_CS_GRAY, 1, 1, 7},
        {"palette=200,palspace=YUV601", VORN_CS_RGB, 3, 1, 7},
        {"palette=200", VORN_CS_YUV601, 3, 1, 7},
        {"palette=1000,b=2", VORN_CS_RGB, 3, 1, 7},
        {"palette=1", VORN_CS_RGB, 4, 1, 7},
        {"palette=16", VORN_CS_CMAPPED, 1, 1, 0},
        {"palette=16", VORN_CS_CMAPPED, 1, 2, 0},
        {"palette=16", -1, 3, 1, 0},
    };
    Loader loader;
    for (const auto& c : cases) {
        const std::string name = std::string("w=31,h=17,c=1,space=CMAPPED,") + c.name;
        SCOPED_TRACE(name + ", wish " + text(c.wish));
        ASSERT_TRUE(loader.open(name));
        if (c.wish >= 0) loader.set(ITAG_ColorSpace, c.wish);
        const Picture target = plainPicture({31, 17, c.channels, c.bytes});
        const Picture entries = loadersPalette(name);
        const int colors = c.wish == VORN_CS_GRAY ? 1 : 3;
        uint32_t entryCode = 0;
        VORN_L_SetColorSpaceCorrection(&entryCode, WishedPicture(name).paletteSpace, c.wish);
        const Picture palette = converted(plainPicture({entries.record.width, 1, colors, c.bytes}),
                                          entries, static_cast<int>(entryCode), nullptr);
        EXPECT_TRUE(loader.read(target));
        EXPECT_TRUE(same(target, converted(target, loadersPicture(name), c.code, &palette)));
    }
    ASSERT_TRUE(loader.open("w=3,h=1,c=1,space=CMAPPED"));
    loader.set(ITAG_ColorSpace, VORN_CS_RGB);
    EXPECT_FALSE(loader.read(plainPicture({3, 1, 3, 1})));
    EXPECT_EQ(loader.error(), 5);
}

TEST_F(Reading, CallsTheMeterAsOftenAsItWasAskedTo) {
    const struct {
        int lines, ticks;
        size_t calls;
    } cases[] = {{100, -1, 16},   {100, 1, 1},  {100, 0, 1},
                 {100, 100, 100}, {10, 35, 35}, {1, 16, 16}};
    Loader loader;
    for (const auto& c : cases) {
        const std::string name = named({7, c.lines, 3, 1}, "");
        ASSERT_TRUE(loader.open(name));
        Calls calls;
        const Picture target = plainPicture({7, c.lines, 3, 1});
        ASSERT_TRUE(loader.read(target, calls.tags(true, c.ticks)));
        EXPECT_TRUE(same(target, loadersPicture(name)));
        ASSERT_EQ(calls.counts.size(), c.calls) << c.lines;
        for (size_t i = 0; i < c.calls; ++i) EXPECT_EQ(calls.counts[i], static_cast<int>(i + 1));
    }
}

// Where an abort comes in the stream decides how much of it the module still sends; the module is
// back in its command loop in every case, and the next picture comes whole.
TEST_F(Reading, StopsWhereTheAbortCallbackSaysAndServesTheNextPicture) {
    constexpr int kBlocks = 6;
    constexpr int kLines = 2;
    Loader loader;
    for (int stopAt = 1; stopAt <= kBlocks; ++stopAt) {
        SCOPED_TRACE(stopAt);
        const std::string name = named({5, kBlocks * kLines, 3, 1}, "block=2,seed=" + text(stopAt));
        ASSERT_TRUE(loader.open(name));
        Calls calls;
        calls.stopAt = stopAt;
        const Picture target = plainPicture({5, kBlocks * kLines, 3, 1});
        Picture expected = target.clone();
        const Picture source = loadersPicture(name);
        for (int y = 0; y < (stopAt - 1) * kLines; ++y)
            vorn::test::slowLineCopy(source, expected, y, y, 0, nullptr);
        EXPECT_FALSE(loader.read(target, calls.tags(false)));
        EXPECT_EQ(loader.error(), 27);
        EXPECT_TRUE(same(target, expected));
        ASSERT_TRUE(loader.close());
        ASSERT_TRUE(loader.reads("w=9,h=9,seed=" + text(100 + stopAt)));
    }
    // It is asked after the meter too: here all lines come in one block.
    ASSERT_TRUE(loader.open("w=5,h=100,block=100"));
    Calls calls;
    calls.stopAfter = 2;
    EXPECT_FALSE(loader.read(plainPicture({5, 100, 3, 1}), calls.tags(true)));
    EXPECT_EQ(loader.error(), 27);
    EXPECT_EQ(calls.counts.size(), 2u);
}

TEST_F(Reading, KeepsNothingOfTheImageBefore) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=5,h=3,orient=0,space=RGB,text=first,dpix=72,dpiy=144"));
    const int program = loader.program();
    loader.set(ITAG_Orientation, 5, ITAG_ColorSpace, VORN_CS_GRAY);
    EXPECT_EQ(loader.number(ITAG_XDPI), 144);
    EXPECT_EQ(loader.number(ITAG_Width), 3);
    EXPECT_TRUE(loader.read(plainPicture({3, 5, 1, 1})));

    EXPECT_TRUE(loader.reads("w=4,h=7,c=4,b=2"));
    EXPECT_EQ(loader.number(ITAG_Width), 4);
    EXPECT_EQ(loader.number(ITAG_XDPI), -1);
    char* description = nullptr;
    EXPECT_FALSE(VORN_H_ImageVaGetTags(loader, ITAG_Description, VORN_Word(&description), TAG_End));
    EXPECT_EQ(description, nullptr);
    EXPECT_EQ(loader.program(), program);
}

TEST_F(Reading, GivesAPictureOnceToABufferThatIsOne) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=6,h=6,seed=3"));
    const Picture target = plainPicture({6, 6, 3, 1});
    VORN_ImageBuffer buffer = bufferOf(target);
    buffer.type = 2;
    EXPECT_FALSE(VORN_H_ImageVaReadData(loader, &buffer, TAG_End));  // the loader isn't asked
    EXPECT_EQ(loader.error(), 60);
    EXPECT_TRUE(loader.read(target));
    EXPECT_TRUE(same(target, loadersPicture("w=6,h=6,seed=3")));
    EXPECT_FALSE(loader.read(target));
    EXPECT_TRUE(loader.reads("w=6,h=6"));
}

TEST_F(Reading, GoesOnAfterModuleCommands) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=6,h=6,seed=8"));
    for (int page = 1; page <= 3; ++page) {
        VORN_TagItem* answer =
            VORN_H_ModuleVaSendCommand(loader, CMD_Module, ITAG_PageNumber, VORN_Word(page),
                                       ITAG_PageName, VORN_Word("leaf"), TAG_End);
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(answer, ITAG_PageNumber)), page + 1);
        char name[16];
        EXPECT_STREQ(VORN_L_CopyTagStringOrNull(answer, ITAG_PageName, name, sizeof name), "leaf");
        VORN_L_TagFreeData(answer);
        // A callback that makes no answer is answered for.
        VORN_L_TagFreeData(VORN_H_ModuleVaSendCommand(loader, CMD_Module, TAG_End));
        EXPECT_EQ(loader.error(), 0);
        EXPECT_EQ(VORN_H_ModuleVaSendCommand(loader, CMD_Module - 1, TAG_End), nullptr);
        EXPECT_EQ(loader.error(), 0);
    }
    const Picture target = plainPicture({6, 6, 3, 1});
    EXPECT_TRUE(loader.read(target));
    EXPECT_TRUE(same(target, loadersPicture("w=6,h=6,seed=8")));
}

}  // namespace
