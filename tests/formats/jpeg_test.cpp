#include "formats/jpeg/jpeg_loader.h"
#include "formats/jpeg/jpeg_saver.h"
#include "tests/formats/format_files.h"

namespace {

using jpeg::JpegLoader;
using jpeg::JpegSaver;

// A picture without hard edges, so that compression changes little.
Bytes slopes(size_t width, size_t height, size_t channels) {
    Bytes samples;
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            for (size_t c = 0; c < channels; ++c)
                samples.push_back(static_cast<uint8_t>(40 + 2 * (c % 2 ? x : y) + 30 * c));
        }
    }
    return samples;
}

class Jpeg : public FormatTest {
  protected:
    std::string saved(size_t width,
                      size_t height,
                      size_t channels,
                      VORN_Word colorSpace,
                      const std::vector<VORN_Word>& more = {}) {
        const size_t taken = colorSpace == VORN_CS_RGB && channels == 4 ? 3 : channels;
        save<JpegSaver>(files_.path("a.jpg"),
                        imageWords(width, height, channels, colorSpace, 1, more),
                        slopes(width, height, taken));
        return files_.path("a.jpg");
    }
};

TEST_F(Jpeg, KeepsGreyColourAndInkWhichItTurnsIntoLightForAHostThatWantsIt) {
    const std::pair<size_t, VORN_Word> kinds[] = {
        {1, VORN_CS_GRAY}, {3, VORN_CS_RGB}, {4, VORN_CS_CMYK}};
    for (const auto& [channels, colorSpace] : kinds) {
        const LoadedImage back = load<JpegLoader>(saved(33, 17, channels, colorSpace));
        EXPECT_EQ(back.image.width, 33);
        EXPECT_EQ(back.image.channels, static_cast<int32_t>(channels));
        EXPECT_EQ(back.image.colorSpace, static_cast<int32_t>(colorSpace));
        EXPECT_LE(furthest(back.samples, slopes(33, 17, channels)), 6) << channels;
    }
    const Bytes ink = load<JpegLoader>(files_.path("a.jpg")).samples;
    const LoadedImage light = load<JpegLoader>(files_.path("a.jpg"), {.colorSpace = VORN_CS_RGB});
    EXPECT_EQ(summaryOf(light.image), "33x17 RGB 3 of 8 bits");
    for (size_t i = 0; i < light.samples.size(); ++i) {
        const int wanted = (255 - ink.at(i / 3 * 4 + i % 3)) * (255 - ink.at(i / 3 * 4 + 3));
        EXPECT_NEAR(light.samples[i], wanted / 255.0, 0.51);
    }
    EXPECT_EQ(load<JpegLoader>(saved(9, 9, 4, VORN_CS_RGB)).image.channels, 3);
}

TEST_F(Jpeg, DeliversTheSmallestPictureThatIsLargeEnough) {
    const std::string upright = saved(100, 60, 3, VORN_CS_RGB);
    const struct {
        formats::Wishes wishes;
        int32_t width, height;
    } cases[] = {{{}, 100, 60},
                 {{.width = 100}, 100, 60},
                 {{.width = 51}, 100, 60},
                 {{.width = 50, .height = 30}, 50, 30},
                 {{.width = 50, .height = 31}, 100, 60},
                 {{.width = 20}, 25, 15},
                 {{.height = 8}, 13, 8},
                 {{.width = 1, .height = 1}, 13, 8},
                 {{.width = 9999}, 100, 60},
                 {{.width = -5, .height = -5}, 100, 60}};
    for (const auto& [wishes, width, height] : cases) {
        const LoadedImage got = load<JpegLoader>(upright, wishes);
        EXPECT_EQ(got.image.width, width) << wishes.width;
        EXPECT_EQ(got.image.height, height) << wishes.width;
    }
    // Wishes count in the picture as it is seen.
    const std::string turned = saved(100, 60, 3, VORN_CS_RGB, {ITAG_Orientation, 1});
    EXPECT_EQ(load<JpegLoader>(turned, {.width = 30, .height = 50}).image.width, 50);
    EXPECT_EQ(load<JpegLoader>(turned, {.width = 50, .height = 30}).image.width, 100);
}

// The first frame marker of a file: the place of its length.
size_t frameOf(const std::string& file) {
    size_t at = 2;
    while ((static_cast<uint8_t>(file[at + 1]) & 0xFC) != 0xC0 || file[at + 1] == '\xC4')
        at += 2 + static_cast<uint8_t>(file[at + 2]) * 256u + static_cast<uint8_t>(file[at + 3]);
    return at + 2;
}

TEST_F(Jpeg, StoresWhatIsSet) {
    const auto fileWith = [&](const char* settings) {
        settings_.store("jpeg", settings);
        return contentOf(saved(64, 64, 3, VORN_CS_RGB));
    };
    const auto sampling = [&](const std::string& file) { return file[frameOf(file) + 9]; };
    EXPECT_EQ(sampling(fileWith("")), 0x11);
    EXPECT_EQ(sampling(fileWith("Quality=89")), 0x22);
    EXPECT_EQ(sampling(fileWith("Subsampling=422")), 0x21);
    EXPECT_EQ(sampling(fileWith("Quality=20\nSubsampling=444")), 0x11);
    const std::string progressive = fileWith("Progressive=true");
    EXPECT_EQ(progressive[frameOf(progressive) - 1], '\xC2');
}

TEST_F(Jpeg, SaysWhyAFileCannotBeRead) {
    const auto failureWith = [&](size_t offset, std::string bytes, const char* settings = "") {
        settings_.store("jpeg", settings);
        std::string file = contentOf(saved(64, 64, 3, VORN_CS_RGB));
        file.replace(frameOf(file) + offset, bytes.size(), bytes);
        return loadFailure<JpegLoader>(files_.write("b.jpg", file));
    };
    EXPECT_EQ(failureWith(2, "\x0C"), formats::kUnsupported);      // 12 bits
    EXPECT_EQ(failureWith(-1, "\xC3"), formats::kUnsupported);     // lossless
    EXPECT_EQ(failureWith(3, {0, 0}), formats::kDamaged);          // no lines
    EXPECT_EQ(failureWith(3, "\xFF\xFF"), formats::kUnsupported);  // beyond libjpeg's largest
    // A few hundred bytes that claim a picture of 65500 x 65500 progressive pixels.
    EXPECT_EQ(failureWith(3, "\xFF\xDC\xFF\xDC", "Progressive=true"), formats::kOutOfMemory);
}

}  // namespace
