// Every pair of orientations, with real pixels, in both directions.
#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"

namespace {

using Orientation = ConversationTest;

constexpr int kOrientations = 8;

std::string pairName(int from, int to) {
    return std::to_string(from) + " to " + std::to_string(to);
}

TEST_F(Orientation, IsTheHostsWhateverTheLoadersIs) {
    Random random(7);
    Loader loader;
    for (int from = 0; from < kOrientations; ++from) {
        for (int to = -1; to < kOrientations; ++to) {  // -1: the host doesn't say
            SCOPED_TRACE(pairName(from, to));
            const std::string name =
                "w=7,h=4,c=3,block=3,dpix=72,dpiy=144,orient=" + std::to_string(from) +
                ",seed=" + std::to_string(8 * from + to);
            ASSERT_TRUE(loader.open(name));
            if (to >= 0) VORN_H_ImageVaSetTags(loader, ITAG_Orientation, VORN_Word(to), TAG_End);
            const Picture turned = reoriented(loadersPicture(name), from, to < 0 ? from : to);
            const bool swapped = turned.record.width == 4;
            EXPECT_EQ(loader.number(ITAG_Width), turned.record.width);
            EXPECT_EQ(loader.number(ITAG_Height), turned.record.height);
            EXPECT_EQ(loader.number(ITAG_XDPI), swapped ? 144 : 72);
            const Picture target = Picture::any(random, shapeOf(turned));
            const Picture expected = inMemoryOf(target, turned);
            ASSERT_TRUE(loader.read(target));
            ASSERT_TRUE(same(target, expected));
            loader.closeImage();
        }
    }
}

TEST_F(Orientation, OfASaverComesOutRight) {
    Random random(8);
    for (int to = 0; to < kOrientations; ++to) {
        Saver saver("saver-" + std::to_string(to));
        for (int from = 0; from < kOrientations; ++from) {
            SCOPED_TRACE(pairName(from, to));
            const Picture source = Picture::any(random, {7, 4, 3, 1});
            const_cast<Picture&>(source).fill(random);
            const std::string target = moduleHome().path("saved");
            ASSERT_TRUE(saver.open(target));
            saver.describe(source, VORN_CS_RGB, "lines=3", from);
            ASSERT_TRUE(saver.write(source)) << saver.code();
            const Picture plain = inMemoryOf(plainPicture(shapeOf(source)), source);
            EXPECT_TRUE(same(Saved(target).picture(), reoriented(plain, from, to)));
            saver.closeImage();
        }
    }
}

// Two pictures through one saver: the second one's size is asked for before anything is written.
TEST_F(Orientation, OfTheLastPictureDoesNotTurnTheNextOnesSize) {
    Saver saver("saver-1");
    const Picture source = plainPicture({7, 4, 3, 1});
    ASSERT_TRUE(saver.open(moduleHome().path("saved")));
    saver.describe(source, VORN_CS_RGB, "", 0);
    ASSERT_TRUE(saver.write(source));
    saver.closeImage();
    ASSERT_TRUE(saver.open(moduleHome().path("saved")));
    saver.describe(source, VORN_CS_RGB, "", 1);
    EXPECT_EQ(saver.number(ITAG_Width), 7);
    EXPECT_EQ(saver.number(ITAG_Height), 4);
}

}  // namespace
