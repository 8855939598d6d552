// A module that was written from the page about the protocol alone.
#include <gtest/gtest.h>
#include <vorn/host.h>

#include <filesystem>
#include <numeric>
#include <vector>

#include "tests/scratch_home.h"

namespace {

class ForeignModule : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        home_ = new ScratchHome;  // one for all tests: threads keep what they found
        std::filesystem::copy_file(FOREIGN_LOADER, home_->path("Loaders/foreign"));
    }
    static void TearDownTestSuite() { delete home_; }
    ForeignModule() : image_(VORN_H_ModuleVaOpen("foreign", VORN_LOADER, TAG_End)) {}
    ~ForeignModule() override { VORN_H_ModuleClose(image_); }

    bool open(const std::string& path) {
        return VORN_H_ImageVaOpen(image_, ITAG_Filename, VORN_Word(path.c_str()), TAG_End);
    }
    // Reads into 8-bit RGB, pixel by pixel.
    bool read(int width, int height, std::string& pixels, VORN_AbortCallback abort = nullptr) {
        pixels.assign(static_cast<size_t>(3 * width * height), '\0');
        VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, {}};
        buffer.chunky = {DF_Chunky3x8, width, height, 3, 1, 0, {}, {}, {}, {}};
        for (int c = 0; c < 3; ++c) {
            buffer.chunky.pixelStep[c] = 3;
            buffer.chunky.lineStep[c] = 3 * width;
            buffer.chunky.channelPlace[c] = reinterpret_cast<uint8_t*>(pixels.data()) + c;
        }
        return VORN_H_ImageVaReadData(image_, &buffer, ITAG_AbortCallback, VORN_Word(abort),
                                      TAG_End);
    }
    int32_t code() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image_)); }

    static inline ScratchHome* home_ = nullptr;
    VORN_Image* image_;
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
        ASSERT_TRUE(open(file)) << code();
        EXPECT_TRUE(read(size[0], size[1], arrived)) << code();
        EXPECT_EQ(arrived, pixels);
        EXPECT_TRUE(VORN_H_ImageClose(image_));
    }
}

TEST_F(ForeignModule, TellsWhatIsWrongAndGoesOn) {
    std::string pixels;
    EXPECT_FALSE(open(home_->write("b.ppm", "no picture")));
    EXPECT_EQ(code(), 2001);
    VORN_H_ImageClose(image_);
    ASSERT_TRUE(open(home_->write("c.ppm", "P6 4 4 255 too short")));
    EXPECT_FALSE(read(4, 4, pixels));
    EXPECT_EQ(code(), 2002);
    VORN_H_ImageClose(image_);

    const VORN_AbortCallback atOnce = [](VORN_Image*, VORN_Word) { return 1; };
    const std::string whole = home_->write("d.ppm", "P6 2 100 255\n" + someBytes(600));
    ASSERT_TRUE(open(whole));
    EXPECT_FALSE(read(2, 100, pixels, atOnce));
    EXPECT_EQ(code(), 27);
    VORN_H_ImageClose(image_);
    ASSERT_TRUE(open(whole));
    EXPECT_TRUE(read(2, 100, pixels));
    EXPECT_EQ(pixels, someBytes(600));
}

}  // namespace
