// A module that was written from the page about the protocol alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "tests/scratch_home.h"
#include "tests/support/module_image.h"

namespace {

class ForeignModule : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        home_ = new ScratchHome;  // one for all tests: threads keep what they found
        std::filesystem::copy_file(FOREIGN_LOADER, home_->path("Loaders/foreign"));
    }
    static void TearDownTestSuite() { delete home_; }

    // Reads into 8-bit RGB, pixel by pixel.
    bool read(int width, int height, std::string& pixels, VORN_AbortCallback abort = nullptr) {
        const Pixels target(width, height, 3, 1);
        const bool done = VORN_H_ImageVaReadData(image_.get(), &target.buffer, ITAG_AbortCallback,
                                                 VORN_Word(abort), TAG_End);
        pixels.assign(target.samples.begin(), target.samples.end());
        return done;
    }

    static inline ScratchHome* home_ = nullptr;
    const Image image_{"foreign", VORN_LOADER};
};

std::string someBytes(size_t count) {
    std::string bytes(count, '\0');
    std::iota(bytes.begin(), bytes.end(), char{1});
    return bytes;
}

TEST_F(ForeignModule, BringsPicturesOfAnySize) {
    const int sizes[][2] = {{1, 1}, {7, 100}, {5000, 33}};
    for (const auto& size : sizes) {
        const std::string pixels = someBytes(static_cast<size_t>(3 * size[0] * size[1]));
        const std::string file =
            home_->write("a.ppm", "P6\n" + std::to_string(size[0]) + " " + std::to_string(size[1]) +
                                      "\n255\n" + pixels);
        std::string arrived;
        ASSERT_TRUE(image_.open(file)) << image_.error();
        EXPECT_TRUE(read(size[0], size[1], arrived)) << image_.error();
        EXPECT_EQ(arrived, pixels);
        EXPECT_TRUE(image_.close());
    }
}

TEST_F(ForeignModule, TellsWhatIsWrongAndGoesOn) {
    std::string pixels;
    EXPECT_FALSE(image_.open(home_->write("b.ppm", "no picture")));
    EXPECT_EQ(image_.error(), 2001);
    image_.close();
    ASSERT_TRUE(image_.open(home_->write("c.ppm", "P6 4 4 255 too short")));
    EXPECT_FALSE(read(4, 4, pixels));
    EXPECT_EQ(image_.error(), 2002);
    image_.close();

    const VORN_AbortCallback atOnce = [](VORN_Image*, VORN_Word) { return 1; };
    const std::string whole = home_->write("d.ppm", "P6 2 100 255\n" + someBytes(600));
    ASSERT_TRUE(image_.open(whole));
    EXPECT_FALSE(read(2, 100, pixels, atOnce));
    EXPECT_EQ(image_.error(), 27);
    image_.close();
    ASSERT_TRUE(image_.open(whole));
    EXPECT_TRUE(read(2, 100, pixels));
    EXPECT_EQ(pixels, someBytes(600));
}

}  // namespace
