// Files of every format, cut short and changed at random: each load ends, with a picture or with an
// error of the module's own. The memory that the loaders touch is watched by the sanitizers' build.
#include <functional>
#include <random>
#include <tuple>

#include "tests/formats/format_files.h"
#include "tests/formats/heif_files.h"
#include "tests/formats/loaders_and_savers.h"
#include "tests/formats/module_host.h"
#include "tests/soak/amounts.h"

namespace {

constexpr size_t kCuts = 50;
constexpr int kFlips = 60;
constexpr int32_t kMostLines = 300;

using formats::Failure;

struct Format {
    const char* name;
    std::function<void(const std::string&)> load;
    std::vector<std::string> files;
};

template <class Saver>
std::string fileOf(VORN_Word channels, VORN_Word colorSpace, VORN_Word bytes = 1) {
    const ScratchDirectory files;
    auto words = imageWords(40, 30, channels, colorSpace, bytes);
    words.insert(words.end(),
                 {ITAG_Description, word("a description"), ITAG_XDPI, 300, ITAG_Orientation, 3});
    auto samples = noiseOf(40 * 30 * channels * bytes);
    std::fill_n(samples.begin(), samples.size() / 2, uint8_t{9});
    save<Saver>(files.path("a"), words, samples);
    return contentOf(files.path("a"));
}

// A head that claims a huge picture is believed until its lines are missing, but not for long.
template <class Loader>
void loadLines(const std::string& path) {
    Loader loader;
    const formats::Description image = loader.open(formats::InputFile(path));
    std::vector<uint8_t> line(static_cast<size_t>(image.lineBytes()));
    for (int32_t y = 0; y < std::min(image.height, kMostLines); ++y) loader.readLine(line.data());
}

template <class Loader, class Saver>
Format format(const char* name, bool grey, bool alpha, bool wide) {
    Format made{name, &loadLines<Loader>, {}};
    made.files.push_back(fileOf<Saver>(3, VORN_CS_RGB));
    if (grey) made.files.push_back(fileOf<Saver>(1, VORN_CS_GRAY));
    if (alpha) made.files.push_back(fileOf<Saver>(4, VORN_CS_RGB));
    if (wide) made.files.push_back(fileOf<Saver>(3, VORN_CS_RGB, 2));
    return made;
}

std::vector<Format> allFormats() {
    return {
        format<pnm::PnmLoader, pnm::PnmSaver>("pnm", true, true, true),
        format<bmp::BmpLoader, bmp::BmpSaver>("bmp", true, true, false),
        format<tga::TgaLoader, tga::TgaSaver>("tga", true, true, false),
#ifdef VORN_HAS_PNG
        format<png::PngLoader, png::PngSaver>("png", true, true, true),
#endif
#ifdef VORN_HAS_JPEG
        format<jpeg::JpegLoader, jpeg::JpegSaver>("jpeg", true, false, false),
#endif
#ifdef VORN_HAS_TIFF
        format<tiff_format::TiffLoader, tiff_format::TiffSaver>("tiff", true, true, true),
#endif
#ifdef VORN_HAS_WEBP
        format<webp::WebpLoader, webp::WebpSaver>("webp", false, true, false),
#endif
#ifdef VORN_HAS_HEIF
        format<heif::HeifLoader, heif::AvifSaver>("avif", true, true, true),
        format<heif::HeifLoader, heif::HeifSaver>("heif", true, true, true),
#endif
#ifdef VORN_HAS_GIF
        format<gif::GifLoader, gif::GifSaver>("gif", true, true, false),
#endif
#ifdef VORN_HAS_JXL
        format<jxl_format::JxlLoader, jxl_format::JxlSaver>("jxl", true, true, true),
#endif
#ifdef VORN_HAS_JPEG2000
        format<jpeg2000::Jpeg2000Loader, jpeg2000::Jpeg2000Saver>("jpeg2000", true, true, true),
#endif
    };
}

// 0: it was read. Anything that is not the module's own error goes on to the test.
int32_t outcome(const Format& format, const std::string& path) {
    return failureOf([&] { format.load(path); });
}

class BrokenFiles : public testing::Test {
  protected:
    ScratchDirectory files_;
    ScopedVariable config_{"XDG_CONFIG_HOME", files_.path("config").c_str()};
};

TEST_F(BrokenFiles, CutAnywhereAreErrorsUntilAllPixelsAreThere) {
    for (const Format& format : allFormats()) {
        for (const std::string& whole : format.files) {
            ASSERT_EQ(outcome(format, files_.write("a", whole)), 0) << format.name;
            for (size_t i = 0; i < kCuts; ++i) {
                // Behind the last tenth may stand what no picture needs.
                const size_t size = whole.size() * 9 / 10 * i / kCuts;
                const int32_t error = outcome(format, files_.write("a", whole.substr(0, size)));
                EXPECT_TRUE(error == formats::kDamaged || error == formats::kNotThisFormat)
                    << format.name << ' ' << size << ' ' << error;
            }
        }
    }
}

TEST_F(BrokenFiles, WithChangedBytesEndWithAPictureOrAnError) {
    std::mt19937 random(7);
    for (const Format& format : allFormats()) {
        for (const std::string& whole : format.files) {
            for (int i = 0; i < kFlips; ++i) {
                std::string changed = whole;
                // Heads are small and matter most.
                const size_t reach = i % 2 ? whole.size() : std::min<size_t>(whole.size(), 128);
                const size_t place = random() % reach;
                changed[place] = static_cast<char>(random());
                const int32_t error = outcome(format, files_.write("a", changed));
                EXPECT_TRUE(error == 0 ||
                            (error >= formats::kNotThisFormat && error <= formats::kUnsupported) ||
                            error == formats::kOutOfMemory || error == formats::kTooWideForBlock ||
                            error == formats::kNoSuchPage)
                    << format.name << ' ' << place << ' ' << error;
            }
        }
    }
}

// One loader reads AVIF and HEIC.
std::string loaderOf(const Format& format) {
    return std::string(format.name) == "avif" ? "heif" : format.name;
}

TEST_F(Modules, AreChosenByContentWhateverAFileIsCalled) {
    for (const Format& format : allFormats()) {
        for (const std::string& whole : format.files) {
            for (const char* name : {"x", "x.txt", "x.pnm", "x.PNG"}) {
                char loader[64] = "";
                EXPECT_TRUE(VORN_H_ImageGetLoaderName(files_.write(name, whole).c_str(), nullptr,
                                                      loader, sizeof loader));
                EXPECT_EQ(loader, loaderOf(format)) << name;
            }
        }
        const std::string text = files_.write(std::string("x.") + format.name, "only text");
        char none[64] = "";
        EXPECT_FALSE(VORN_H_ImageGetLoaderName(text.c_str(), nullptr, none, sizeof none));
        EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)), 28) << format.name;
    }
}

// A picture, or an error; and the whole file can be read after each.
TEST_F(Modules, SurviveBrokenFiles) {
    std::mt19937 random(11);
    const ScopedVariable quiet{"VORN_LOG", std::nullopt};
    for (const Format& format : allFormats()) {
        const Image image(loaderOf(format).c_str(), VORN_LOADER);
        const auto read = [&](const std::string& content) {
            if (!image.open(files_.write("x", content))) return image.error();
            Pixels pixels(40, 30, 4, 1);
            VORN_H_ImageVaSetTags(image.get(), ITAG_ColorSpace, VORN_Word{VORN_CS_RGB},
                                  ITAG_Orientation, VORN_Word{0}, TAG_End);
            int32_t size[2] = {0, 0};
            VORN_H_ImageVaGetTags(image.get(), ITAG_Width, &size[0], ITAG_Height, &size[1],
                                  TAG_End);
            if (size[0] != 40 || size[1] != 30) return image.close() ? 0 : image.error();
            return VORN_H_ImageVaReadData(image.get(), &pixels.buffer, TAG_End) ? 0 : image.error();
        };
        for (const std::string& whole : format.files) {
            for (int i = 0; i < 6; ++i) {
                std::string broken = whole;
                if (i % 2)
                    broken[random() % std::min<size_t>(whole.size(), 200)] =
                        static_cast<char>(random());
                else
                    broken.resize(random() % whole.size());
                const int32_t error = read(broken);
                EXPECT_NE(error, 3) << format.name;  // the module's end
                image.close();
                EXPECT_EQ(read(whole), 0) << format.name << " after " << error;
                image.close();
            }
        }
    }
}

std::string number(uint64_t value, size_t bytes, bool bigEnd) {
    std::string text;
    for (size_t i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> 8 * (bigEnd ? bytes - 1 - i : i));
    return text;
}
std::string little(uint64_t value, size_t bytes) { return number(value, bytes, false); }
std::string big(uint64_t value, size_t bytes) { return number(value, bytes, true); }

std::string tiffBomb() {
    std::string fields;
    const uint32_t values[][2] = {{256, 65536}, {257, 65536}, {258, 8},     {259, 8}, {262, 1},
                                  {277, 1},     {322, 65536}, {323, 65536}, {324, 8}, {325, 100}};
    for (const auto& [tag, value] : values)
        fields += little(tag, 2) + little(4, 2) + little(1, 4) + little(value, 4);
    return "II*" + little(0, 1) + little(8, 4) + little(std::size(values), 2) + fields +
           std::string(104, '\0');
}

// Three components of full resolution: 8 GiB of samples, 16 of coefficients.
std::string jpegBomb() {
    std::string table = "\xFF\xDB" + big(67, 2) + std::string(1, '\0') + std::string(64, '\1');
    std::string codes = "\xFF\xC4" + big(20, 2) + std::string(1, '\0') + "\1" +
                        std::string(15, '\0') + std::string(1, '\0');
    std::string frame = "\xFF\xC2" + big(17, 2) + "\x08" + big(53000, 2) + big(53000, 2) + "\3";
    for (char c = 1; c <= 3; ++c) frame += std::string{c, '\x11', '\0'};
    const std::string scan =
        "\xFF\xDA" + big(12, 2) + "\3" + std::string{1, 0, 2, 0, 3, 0, 0, 0, 0};
    return "\xFF\xD8" + table + codes + frame + scan + std::string(300, '\0') + "\xFF\xD9";
}

// What the host is told: 0 for a picture.
int32_t outcome(const Image& loader, const std::string& path) {
    Pixels pixels(64, 64, 1, 1);
    const bool read =
        loader.open(path) && VORN_H_ImageVaReadData(loader.get(), &pixels.buffer, TAG_End);
    return read ? 0 : loader.error();
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
        {"jpeg", formats::kOutOfMemory, jpegBomb()},
        {"tiff", formats::kOutOfMemory, tiffBomb()},
        {"webp", formats::kDamaged,
         "RIFF" + little(30, 4) + "WEBPVP8L" + little(17, 4) + "\x2F" + little(0x0FFFFFFF, 4) +
             std::string(13, '\0')},
        {"gif", formats::kDamaged,
         "GIF89a" + little(65535, 2) + little(65535, 2) + std::string("\xF0\0\0", 3) +
             std::string(6, '\7') + "," + std::string(4, '\0') + little(65535, 2) +
             little(65535, 2) + std::string(1, '\0') + "\2\2\x44\1" + std::string(1, '\0') + ";"}};
    for (const auto& [format, wanted, content] : bombs) {
        if (!std::filesystem::exists(home() + "/Loaders/" + format + ".cap")) continue;
        const Image loader(format, VORN_LOADER);
        EXPECT_EQ(outcome(loader, files_.write("a", content)), wanted) << format;
    }
}

#ifdef VORN_HAS_HEIF
// Some kilobytes, and pictures whose decoding takes more than the limit: when the boxes say so, the
// limit is what is wrong. What the boxes hide is not decoded.
TEST_F(Modules, TellAPictureLargerThanItsBoxesClaimFromAWantOfMemory) {
    if (isSanitized()) GTEST_SKIP() << "a sanitizer takes more memory than the limit";
    const ScopedVariable limit{"VORN_MEMORY_LIMIT", "64M"};
    const Image loader("heif", VORN_LOADER);
    for (const auto& saveFlat : {save<heif::AvifSaver>, save<heif::HeifSaver>}) {
        saveFlat(files_.path("a"), imageWords(2100, 2100, 1, VORN_CS_GRAY),
                 std::vector<uint8_t>(2100 * 2100, 128));
        const std::string content = contentOf(files_.path("a"));
        EXPECT_EQ(outcome(loader, files_.path("a")), 76);
        EXPECT_EQ(outcome(loader, files_.write("a", withSize(content, 64, 64))), formats::kDamaged);
    }
}
#endif

}  // namespace
