// Every pair of orientations, with real pixels, in both directions.
#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"

namespace {

using Orientation = ConversationTest;

constexpr int kOrientations = 8;

TEST_F(Orientation, IsTheHostsWhateverTheLoadersIs) {
    Random random(7);
    Loader loader;
    for (int pair = 0; pair < 9 * kOrientations; ++pair) {
        const int from = pair % kOrientations;
        const int to = pair / kOrientations - 1;  // -1: the host doesn't say
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
        const std::string name = "w=7,h=4,block=3,dpix=72,dpiy=144,orient=" + std::to_string(from);
        ASSERT_TRUE(loader.open(name));
        if (to >= 0) loader.set(ITAG_Orientation, to);
        const Picture turned = reoriented(loadersPicture(name), from, to < 0 ? from : to);
        EXPECT_EQ(loader.number(ITAG_Width), turned.record.width);
        EXPECT_EQ(loader.number(ITAG_Height), turned.record.height);
        EXPECT_EQ(loader.number(ITAG_XDPI), turned.record.width == 4 ? 144 : 72);
        const Picture target = Picture::any(random, shapeOf(turned));
        const Picture expected = inMemoryOf(target, turned);
        ASSERT_TRUE(loader.read(target));
        ASSERT_TRUE(same(target, expected));
    }
}

TEST_F(Orientation, OfASaverComesOutRight) {
    Random random(8);
    const std::string target = moduleHome().path("saved");
    for (int to = 0; to < kOrientations; ++to) {
        Saver saver("saver-" + std::to_string(to));
        for (int from = 0; from < kOrientations; ++from) {
            SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
            Picture source = Picture::any(random, {7 + from, 4, 3, 1});
            source.fill(random);
            ASSERT_TRUE(saver.open(target));
            saver.describe(source, VORN_CS_RGB, "lines=3", from);
            // Before anything is written, the last picture must not answer for this one.
            EXPECT_EQ(saver.number(ITAG_Width), 7 + from);
            ASSERT_TRUE(saver.write(source)) << saver.error();
            const Picture plain = inMemoryOf(plainPicture(shapeOf(source)), source);
            EXPECT_TRUE(same(Saved(target).picture(), reoriented(plain, from, to)));
        }
    }
}

}  // namespace
