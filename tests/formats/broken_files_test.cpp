// Broken files, read by a host: of every format, cut short and changed at random, and small ones
// that claim huge pictures. Each is a picture or a clear error, and the same program reads the
// whole file next. What the loaders do to memory is watched by the sanitizers' build.
#include <algorithm>
#include <random>
#include <set>
#include <tuple>

#include "tests/formats/module_host.h"
#include "tests/soak/amounts.h"

namespace {

constexpr size_t kCuts = 50;
constexpr size_t kFlips = 50;
constexpr size_t kHead = 128;  // small, and matters most

struct Format {
    const char* saver;
    std::vector<const char*> settings;  // each makes a file of its own

    friend void PrintTo(const Format& format, std::ostream* out) { *out << format.saver; }
};

std::vector<Format> installedFormats() {
    std::vector<Format> formats = {
        {"pnm", {"Form=plain"}},
        {"bmp", {}},
        {"tga", {"RunLength=false"}},
        {"png", {"Interlace=true"}},
        {"jpeg", {"Progressive=true", "Subsampling=422"}},
        {"tiff", {"Compression=deflate", "Compression=none", "Compression=jpeg", "Tiles=64"}},
        {"webp", {"Lossless=true"}},
        {"gif", {}},
        {"jxl", {"Lossless=true"}},
        {"jpeg2000", {"Lossless=false", "TileSize=16"}},
        {"avif", {"Lossless=true"}},
        {"heif", {"Lossless=true"}}};
    std::erase_if(formats, [](const Format& format) { return !Modules::has(format.saver); });
    return formats;
}

class BrokenFiles : public Modules, public testing::WithParamInterface<Format> {
  protected:
    std::string fileOf(int32_t channels, int32_t bytes) const {
        const Image saver(GetParam().saver, VORN_SAVER);
        Pixels pixels(40, 30, channels, bytes);
        pixels.fill(noiseOf(pixels.samples.size() / 2));
        const bool grey = channels == 1;
        EXPECT_TRUE(
            saver.open(files_.path("a")) &&
            describe(saver, pixels, grey ? VORN_CS_GRAY : VORN_CS_RGB) &&
            saver.set(ITAG_Description, "a description", ITAG_XDPI, 300, ITAG_Orientation, 3) &&
            saver.write(pixels))
            << saver.error();
        return contentOf(files_.path("a"));
    }

    std::vector<std::string> wholeFiles() const {
        std::vector<std::string> files = {fileOf(3, 1), fileOf(1, 1), fileOf(4, 1), fileOf(3, 2)};
        for (const char* setting : GetParam().settings) {
            user_.store(GetParam().saver, setting);
            files.push_back(fileOf(3, 1));
        }
        return files;
    }

    // What the host is told: 0 for a picture. The whole file can be read next.
    int32_t outcome(const std::string& broken, const std::string& whole) const {
        const int32_t error = read(broken);
        EXPECT_EQ(read(whole), 0) << "after " << error;
        return error;
    }

    int32_t read(const std::string& content) const {
        bool done = loader_.open(files_.write("x", content)) &&
                    loader_.set(ITAG_ColorSpace, VORN_CS_RGB, ITAG_Orientation, 0);
        if (done) {
            // What has become large is read scaled.
            const Pixels pixels(std::min(loader_.number(ITAG_Width), 100),
                                std::min(loader_.number(ITAG_Height), 100), 4, 1);
            done = loader_.read(pixels);
        }
        const int32_t error = done ? 0 : loader_.error();
        EXPECT_TRUE(done || error != 0) << "a failure without a reason";
        loader_.close();
        return error;
    }

  private:
    Image loader_{loaderOf(GetParam().saver), VORN_LOADER};
};

TEST_P(BrokenFiles, CutAnywhereAreErrorsUntilAllPixelsAreThere) {
    for (const std::string& whole : wholeFiles()) {
        for (size_t i = 0; i < kCuts; ++i) {
            // Behind the last tenth may stand what no picture needs.
            const size_t size = whole.size() * 9 / 10 * i / kCuts;
            const int32_t error = outcome(whole.substr(0, size), whole);
            EXPECT_TRUE(error == formats::kDamaged || error == formats::kNotThisFormat)
                << size << ' ' << error;
        }
    }
}

TEST_P(BrokenFiles, WithChangedBytesEndWithAPictureOrAnError) {
    using namespace formats;
    const std::set<int32_t> answers = {
        0, kNotThisFormat, kDamaged, kUnsupported, kOutOfMemory, kTooWideForBlock, kNoSuchPage};
    std::mt19937 random(7);
    for (const std::string& whole : wholeFiles()) {
        for (size_t i = 0; i < kFlips; ++i) {
            std::string changed = whole;
            const size_t place = random() % (i % 2 ? whole.size() : std::min(whole.size(), kHead));
            changed[place] = static_cast<char>(random());
            const int32_t error = outcome(changed, whole);
            EXPECT_TRUE(answers.contains(error)) << place << ' ' << error;
        }
    }
}

TEST_P(BrokenFiles, AreChosenByContentWhateverTheyAreCalled) {
    char loader[64] = "";
    for (const std::string& whole : wholeFiles()) {
        for (const char* name : {"x", "x.txt", "x.pnm", "x.PNG"}) {
            EXPECT_TRUE(VORN_H_ImageGetLoaderName(files_.write(name, whole).c_str(), nullptr,
                                                  loader, sizeof loader));
            EXPECT_EQ(loader, loaderOf(GetParam().saver)) << name;
        }
    }
    const std::string text = files_.write(std::string("x.") + GetParam().saver, "only text");
    EXPECT_FALSE(VORN_H_ImageGetLoaderName(text.c_str(), nullptr, loader, sizeof loader));
    EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)), 28);
    const std::string mp4 = big(20, 4) + "ftypmp42" + little(0, 4) + "mp42";
    const std::string others[] = {"",
                                  "BM",
                                  "GIF89",
                                  "GIF88a and more",
                                  "\x89PNG",
                                  "II*",
                                  "RIFF",
                                  "RIFF1234WAVE",
                                  "\xFF",
                                  "\xFF\x0B",
                                  "\xFF\x4F\xFF",
                                  "JXL picture",
                                  mp4,
                                  "0000moovheic",
                                  "ftypheic",
                                  "jP picture",
                                  "a text that is long enough for a head"};
    for (const std::string& other : others)
        EXPECT_EQ(read(other), formats::kNotThisFormat) << other;
}

INSTANTIATE_TEST_SUITE_P(Formats,
                         BrokenFiles,
                         testing::ValuesIn(installedFormats()),
                         [](const auto& format) { return std::string(format.param.saver); });

std::string tiffBomb() {
    std::string fields;
    const uint32_t values[][2] = {{256, 65536}, {257, 65536}, {258, 8},     {259, 8}, {262, 1},
                                  {277, 1},     {322, 65536}, {323, 65536}, {324, 8}, {325, 100}};
    for (const auto& [tag, value] : values)
        fields += little(tag, 2) + little(4, 2) + little(1, 4) + little(value, 4);
    return "II*" + little(0, 1) + little(8, 4) + little(std::size(values), 2) + fields +
           std::string(104, '\0');
}

// What the host is told: 0 for a picture.
int32_t outcome(const Image& loader, const std::string& path) {
    return loader.open(path) && loader.read(Pixels(64, 64, 1, 1)) ? 0 : loader.error();
}

TEST_F(Modules, DontBelieveASmallFileThatClaimsAHugePicture) {
    const std::string tgaSizes = little(65535, 2) + little(65535, 2);
    const std::tuple<const char*, int32_t, std::string> bombs[] = {
        {"pnm", formats::kDamaged, "P5\n65536 65536\n255\n"},
        {"bmp", formats::kDamaged,
         "BM" + little(58, 4) + little(0, 4) + little(54, 4) + little(40, 4) + little(65536, 4) +
             little(65536, 4) + little(1, 2) + little(8, 2) + little(1, 4) + std::string(20, '\0') +
             "abcd"},
        {"tga", formats::kDamaged,
         std::string("\0\0\x0B", 3) + std::string(9, '\0') + tgaSizes + "\x08" +
             std::string(1, '\0') + "\xFF\1"},
        // 8-bit grey, interlaced.
        {"png", formats::kOutOfMemory,
         "\x89PNG\r\n\x1A\n" + big(13, 4) + "IHDR" + big(65536, 4) + big(65536, 4) +
             std::string{8, 0, 0, 0, 1} + big(0x3EE85FA9, 4) + big(99, 4) + "IDAT" +
             std::string(99, 'x')},
        {"tiff", formats::kOutOfMemory, tiffBomb()},
        {"webp", formats::kDamaged,
         "RIFF" + little(30, 4) + "WEBPVP8L" + little(17, 4) + "\x2F" + little(0x0FFFFFFF, 4) +
             std::string(13, '\0')},
        {"gif", formats::kDamaged,
         "GIF89a" + little(65535, 2) + little(65535, 2) + std::string("\xF0\0\0", 3) +
             std::string(6, '\7') + "," + std::string(4, '\0') + little(65535, 2) +
             little(65535, 2) + std::string(1, '\0') + "\2\2\x44\1" + std::string(1, '\0') + ";"},
        {"jxl", formats::kOutOfMemory,
         "\xFF\x0A" + little(0x3FFFF00007FFFE, 7) + little(0x3000, 2) + std::string(7, '\0')}};
    for (const auto& [format, wanted, content] : bombs) {
        if (!has(format)) continue;
        const Image loader(format, VORN_LOADER);
        EXPECT_EQ(outcome(loader, files_.write("a", content)), wanted) << format;
    }
}

// Some kilobytes, and pictures whose decoding takes more than the limit: when the boxes say so, the
// limit is what is wrong. What the boxes hide is not decoded.
TEST_F(Modules, TellAPictureLargerThanItsBoxesClaimFromAWantOfMemory) {
    if (isSanitized()) GTEST_SKIP() << "a sanitizer takes more memory than the limit";
    const ScopedVariable limit{"VORN_MEMORY_LIMIT", "64M"};
    const Image loader("heif", VORN_LOADER);
    const Pixels flat(2100, 2100, 1, 1);
    for (const char* name : {"avif", "heif"}) {
        if (!has(name)) continue;
        const Image saver(name, VORN_SAVER);
        ASSERT_TRUE(save(saver, files_.path("a"), flat, VORN_CS_GRAY)) << saver.error();
        const std::string content = contentOf(files_.path("a"));
        EXPECT_EQ(outcome(loader, files_.path("a")), 76);
        EXPECT_EQ(outcome(loader, files_.write("a", withSize(content, 64, 64))), formats::kDamaged);
    }
}

}  // namespace
