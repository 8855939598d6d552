// What savers make of their settings, and what they refuse.
#include <tuple>

#include "tests/formats/module_host.h"

namespace {

TEST_F(Modules, MakeSmallerFilesWithSmallerSettings) {
    const std::tuple<const char*, int32_t, const char*, const char*> pairs[] = {
        {"tga", 3, "RunLength=false", ""},  // noise has no runs
        {"jpeg", 3, "Quality=20", "Quality=95"},
        {"webp", 3, "Quality=10", ""},
        {"webp", 3, "", "Lossless=true"},
        {"webp", 3, "Lossless=true\nEffort=6", "Lossless=true\nEffort=0"},
        {"jxl", 3, "Quality=10", "Quality=80"},
        {"jxl", 3, "Quality=80", ""},
        {"jxl", 3, "", "Lossless=true"},
        {"jxl", 3, "Lossless=true\nEffort=7", "Lossless=true\nEffort=1"},
        {"jpeg2000", 1, "Lossless=false\nQuality=30", "Lossless=false"},
        {"jpeg2000", 1, "Lossless=false", "Quality=30"},
        {"jpeg2000", 1, "TileSize=0", "TileSize=30"},
        {"tiff", 1, "Compression=deflate\nLevel=9", "Compression=deflate\nLevel=1"},
        {"tiff", 3, "Compression=jpeg\nQuality=40", "Compression=jpeg"},
        {"avif", 3, "Quality=10", ""},
        {"avif", 3, "", "Lossless=true"},
        {"avif", 3, "Subsampling=420", "Subsampling=444"},
        {"heif", 3, "Quality=10", ""},
        {"heif", 3, "", "Lossless=true"},
        {"heif", 3, "Subsampling=420", "Subsampling=444"}};
    for (const auto& [saver, channels, smaller, larger] : pairs) {
        if (!has(saver)) continue;
        Pixels pixels(150, 150, channels, 1);
        const Bytes noise = noiseOf(pixels.samples.size());
        for (size_t i = 0; i < noise.size(); ++i) pixels.samples[i] = noise[i] & noise[i / 2];
        const auto sizeWith = [&, name = saver, colors = channels](const char* settings) {
            user_.store(name, settings);
            const Image image(name, VORN_SAVER);
            EXPECT_TRUE(
                save(image, files_.path("a"), pixels, colors == 1 ? VORN_CS_GRAY : VORN_CS_RGB));
            return files_.read("a").size();
        };
        EXPECT_LT(sizeWith(smaller), sizeWith(larger)) << saver << ' ' << smaller;
    }
}

constexpr int32_t kErrorOfTheSystem = 0x08000000;  // and those above

// 0: saved.
int32_t failureOf(const std::string& saver,
                  const std::string& path,
                  const Pixels& pixels,
                  int32_t colorSpace) {
    const Image image(saver, VORN_SAVER);
    return save(image, path, pixels, colorSpace) ? 0 : image.error();
}

struct Kind {
    int32_t width, channels, bytes, colorSpace;
    const char* settings = "";
};

TEST_F(Modules, RefuseToSaveWhatTheyDontKnowAndLeaveTheFileAsItWas) {
    const Kind ink{1, 4, 1, VORN_CS_CMYK}, indexed{1, 1, 1, VORN_CS_CMAPPED};
    const struct {
        const char* saver;
        std::vector<const char*> badSettings;
        std::vector<Kind> kinds;
    } savers[] = {
        {"pnm", {"Form=text"}, {ink, {1, 5, 1, VORN_CS_RGB}}},
        {"bmp", {}, {ink, indexed}},
        {"tga", {"RunLength=5"}, {ink, indexed, {65536, 1, 1, VORN_CS_GRAY}}},
        {"gif", {}, {ink, indexed, {65536, 1, 1, VORN_CS_GRAY}}},
        {"png",
         {"CompressionLevel=10", "CompressionLevel=fast", "Filter=sharp", "Filter=none\nStrategy=0",
          "Interlace=2"},
         {ink, indexed, {1, 5, 1, VORN_CS_NONE}}},
        {"jpeg",
         {"Quality=0", "Quality=101", "Subsampling=411"},
         {{1, 5, 1, VORN_CS_NONE}, {65501, 1, 1, VORN_CS_GRAY}}},
        {"tiff",
         {"Compression=zip", "Tiles=100", "Compression=deflate\nLevel=0"},
         {indexed,
          {1, 1, 2, VORN_CS_GRAY, "Compression=jpeg"},
          {1, 4, 1, VORN_CS_CMYK, "Compression=jpeg"}}},
        {"webp", {"Quality=101", "Quality=-1", "Effort=7"}, {ink, {16384, 3, 1, VORN_CS_RGB}}},
        {"jpeg2000", {"Quality=101", "TileSize=-1", "TileSize=1"}, {ink}},
        {"jxl", {"Quality=101", "Effort=0"}, {ink}},
        {"avif", {"Quality=101", "Effort=10", "Subsampling=411"}, {ink}},
        {"heif", {"Quality=101", "Effort=10", "Subsampling=411"}, {ink}}};
    const std::string path = files_.write("a", "before");
    for (const auto& [saver, badSettings, kinds] : savers) {
        if (!has(saver)) continue;
        const Pixels color(300, 300, 3, 1);
        for (const char* settings : badSettings) {
            user_.store(saver, settings);
            EXPECT_EQ(failureOf(saver, path, color, VORN_CS_RGB), formats::kBadOption)
                << saver << ' ' << settings;
        }
        for (const Kind& kind : kinds) {
            user_.store(saver, kind.settings);
            EXPECT_EQ(failureOf(saver, path, Pixels(kind.width, 1, kind.channels, kind.bytes),
                                kind.colorSpace),
                      formats::kCannotSave)
                << saver << ' ' << &kind - kinds.data();
        }
        EXPECT_EQ(contentOf(path), "before") << saver;
        user_.store(saver, "");
        EXPECT_GE(failureOf(saver, "/dev/full", color, VORN_CS_RGB), kErrorOfTheSystem) << saver;
        EXPECT_EQ(failureOf(saver, files_.path("none/a"), color, VORN_CS_RGB), formats::kCannotOpen)
            << saver;
    }
}

}  // namespace
