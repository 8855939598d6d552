// A module that was written from the page about the protocol alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "tests/scratch_home.h"
#include "tests/support/module_image.h"

namespace {

std::string picture(int width, int height) {
    std::string samples(static_cast<size_t>(3 * width * height), '\0');
    std::iota(samples.begin(), samples.end(), char{1});
    return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" + samples;
}

int32_t stopAtOnce(VORN_Image*, VORN_Word) { return 1; }

TEST(ForeignModule, BringsPicturesOfAnySizeOrTellsWhatIsWrongAndGoesOn) {
    const struct {
        std::string file;
        int width, height;
        int error = 0;
        VORN_AbortCallback abort = nullptr;
    } cases[] = {
        {picture(1, 1), 1, 1},
        {picture(5000, 33), 5000, 33},
        {"no picture", 1, 1, 2001},
        {"P6 4 4 255 too short", 4, 4, 2002},
        {picture(2, 100), 2, 100, 27, stopAtOnce},
        {picture(7, 100), 7, 100},
    };
    const ScratchHome home;
    std::filesystem::copy_file(FOREIGN_LOADER, home.path("Loaders/foreign"));
    const Image image("foreign", VORN_LOADER);
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        const Pixels target(c.width, c.height, 3, 1);
        const bool done = image.open(home.write("a.ppm", c.file)) &&
                          VORN_H_ImageVaReadData(image.get(), &target.buffer, ITAG_AbortCallback,
                                                 VORN_Word(c.abort), TAG_End);
        EXPECT_EQ(done, c.error == 0);
        EXPECT_EQ(image.error(), c.error);
        EXPECT_TRUE(!done ||
                    c.file.ends_with(std::string(target.samples.begin(), target.samples.end())));
        EXPECT_TRUE(image.close());
    }
}

}  // namespace
