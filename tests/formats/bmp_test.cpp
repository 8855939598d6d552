#include "formats/bmp/bmp_loader.h"
#include "formats/bmp/bmp_saver.h"
#include "tests/formats/format_files.h"

namespace {

using bmp::BmpLoader;
using bmp::BmpSaver;
using namespace std::string_literals;

// A file with a head of 40 bytes; `behind` are masks or palette, and then the pixels.
std::string file(int width,
                 int height,
                 uint32_t bits,
                 uint32_t compression,
                 const std::string& behind,
                 const std::string& pixels) {
    const size_t behindBytes = behind.size();
    return "BM" + little(0, 8) + little(54 + behindBytes, 4) + little(40, 4) +
           little(static_cast<uint32_t>(width), 4) + little(static_cast<uint32_t>(height), 4) +
           little(1, 2) + little(bits, 2) + little(compression, 4) + little(0, 4) +
           little(11811, 4) + little(2835, 4) + little(bits <= 8 ? behindBytes / 4 : 0, 4) +
           little(0, 4) + behind + pixels;
}

const std::string kFourColors = "\3\2\1\0\6\5\4\0\x09\x08\7\0\x0C\x0B\x0A\0"s;

TEST(BmpLoader, ReadsEveryKind) {
    const struct {
        const char* what;
        std::string file;
        int32_t orientation;
        std::string samples;
    } cases[] = {
        {"1 bit", file(9, 1, 1, 0, kFourColors.substr(0, 8), "\xA0\x80\0\0"s), 0,
         "\1\0\1\0\0\0\0\0\1"s},
        {"2 bits", file(3, 1, 2, 0, kFourColors, "\x1B\0\0\0"s), 0, "\0\1\2"s},
        {"4 bits, the top line first", file(3, -2, 4, 0, kFourColors, "\x12\x30\0\0\1\0\0\0"s), 0,
         "\1\2\3\0\1\0"s},
        {"8 bits", file(1, 2, 8, 0, kFourColors, "\3\0\0\0\1\0\0\0"s), 0, "\1\3"},
        {"5 bits a channel", file(2, 1, 16, 0, "", "\x1F\x7C\xE0\3"), 0, "\xFF\0\xFF\0\xFF\0"s},
        {"5, 6 and 5 bits", file(1, 1, 16, 3, "\0\xF8\0\0\xE0\7\0\0\x1F\0\0\0"s, "\0\x84\0\0"s), 0,
         "\x84\x82\0"s},
        {"24 bits", file(1, 1, 24, 0, "", "\1\2\3\0"s), 0, "\3\2\1"},
        {"32 bits, of which 8 mean nothing", file(1, 1, 32, 0, "", "\1\2\3M"), 0, "\3\2\1"},
        {"32 bits with alpha",
         file(1, 1, 32, 6, "\xFF\0\0\0\0\xFF\0\0\0\0\xFF\0\0\0\0\xFF"s, "\1\2\3M"), 0, "\1\2\3M"},
        {"runs of bytes", file(4, 3, 8, 1, kFourColors, "\3\2\0\0\0\3\1\2\3\0\0\0\x09\1\0\1"s), 6,
         "\2\2\2\0\1\2\3\0\1\1\1\1"s},
        {"runs of half bytes", file(5, 1, 4, 2, kFourColors, "\3\x12\0\1"s), 6, "\1\2\1\0\0"s},
        {"literal half bytes", file(5, 1, 4, 2, kFourColors, "\0\5\x12\x31\x20\0\0\1"s), 6,
         "\1\2\3\1\2"},
        {"runs that skip", file(3, 4, 8, 1, kFourColors, "\1\3\0\2\1\2\1\2\0\0\1\1\0\1"s), 6,
         "\3\0\0\0\0\0\0\0\2\1\0\0"s},
    };
    const ScratchDirectory files;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<BmpLoader>(files.write("a", c.file));
        EXPECT_EQ(got.text(), c.samples);
        EXPECT_EQ(got.image.orientation, c.orientation);
        EXPECT_EQ(tagsOf(got.image)[ITAG_XDPI], 300u);
        EXPECT_EQ(tagsOf(got.image)[ITAG_YDPI], 72u);
        if (got.image.colorSpace == VORN_CS_CMAPPED) {
            EXPECT_EQ(paletteOf(got.image)[5], 6);
        }
    }
}

TEST(BmpLoader, RefusesWhatIsNotRight) {
    const std::pair<int32_t, std::vector<std::string>> cases[] = {
        {formats::kDamaged,
         {file(0, 1, 24, 0, "", ""), file(1, 0, 24, 0, "", ""), file(1, 1, 8, 1, kFourColors, "\1"),
          file(1, 2, 24, 0, "", "\1\2\3\0\1\2"s)}},
        {formats::kUnsupported,
         {file(65537, 1, 24, 0, "", ""), file(1, INT32_MIN, 24, 0, "", ""),
          file(1, 1, 7, 0, kFourColors, ""), file(1, 1, 24, 4, "", ""),
          file(1, 1, 16, 3, "\5" + std::string(11, '\0'), std::string(4, '\0'))}}};
    const ScratchDirectory files;
    for (const auto& [code, contents] : cases) {
        for (const std::string& content : contents)
            EXPECT_EQ(loadFailure<BmpLoader>(files.write("a", content)), code);
    }
}

TEST(BmpSaver, WritesGreyWithAPalette) {
    const ScratchDirectory files;
    const std::string path = files.path("a.bmp");
    save<BmpSaver>(path, imageWords(3, 1, 1, VORN_CS_GRAY), {0, 100, 255});
    const LoadedImage grey = load<BmpLoader>(path);
    EXPECT_EQ(grey.samples, (Bytes{0, 100, 255}));
    EXPECT_EQ(paletteOf(grey.image)[300], 100);
    save<BmpSaver>(path, imageWords(1, 1, 2, VORN_CS_GRAY), {100, 50});
    EXPECT_EQ(load<BmpLoader>(path).samples, (Bytes{100, 100, 100, 50}));
}

}  // namespace
