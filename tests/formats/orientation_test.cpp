// Pictures that lie on their side in the file, seen by a host through the modules.
#include "formats/common/exif.h"
#include "tests/formats/module_host.h"

namespace {

constexpr int kBlock = 16;  // pixels; JPEG keeps even blocks of one colour as they are
constexpr int kAcross = 3;
constexpr int kDown = 2;

// The upright picture: six blocks, each of its own grey.
int greyOf(int column, int row) { return 30 + 35 * (row * kAcross + column); }

// By the definition of EXIF: the sides at which line 0 and column 0 of the file are to be seen.
struct Sides {
    int exif;
    const char* line0;
    const char* column0;
};
const Sides kSides[] = {{1, "top", "left"},     {2, "top", "right"},  {3, "bottom", "right"},
                        {4, "bottom", "left"},  {5, "left", "top"},   {6, "right", "top"},
                        {7, "right", "bottom"}, {8, "left", "bottom"}};

// The block of the upright picture that stands in the file at (x, y).
int storedGrey(const Sides& sides, int x, int y) {
    int column = 0;
    int row = 0;
    for (const auto& [side, at] : {std::pair{sides.line0, y}, std::pair{sides.column0, x}}) {
        const std::string name = side;
        if (name == "left") column = at;
        if (name == "right") column = kAcross - 1 - at;
        if (name == "top") row = at;
        if (name == "bottom") row = kDown - 1 - at;
    }
    return greyOf(column, row);
}

void saveStored(const char* module, const std::string& path, const Sides& sides) {
    const bool turned = sides.exif > 4;
    const int across = (turned ? kDown : kAcross) * kBlock;
    const int down = (turned ? kAcross : kDown) * kBlock;
    Pixels picture(across, down, 3, 1);
    for (int i = 0; i < across * down; ++i)
        std::fill_n(
            &picture.samples[static_cast<size_t>(3 * i)], 3,
            static_cast<uint8_t>(storedGrey(sides, i % across / kBlock, i / across / kBlock)));
    const Image image(module, VORN_SAVER);
    ASSERT_TRUE(image.open(path) && describe(image, picture, VORN_CS_RGB));
    image.set(ITAG_Orientation, formats::orientationFromExif(sides.exif));
    ASSERT_TRUE(image.write(picture));
}

void expectUpright(const std::string& loader, const std::string& path) {
    const Image image(loader, VORN_LOADER);
    const Pixels picture(kAcross * kBlock, kDown * kBlock, 3, 1);
    ASSERT_TRUE(image.open(path) && image.set(ITAG_Orientation, 0) && image.read(picture));
    for (int row = 0; row < kDown; ++row) {
        for (int column = 0; column < kAcross; ++column) {
            const int middle =
                ((row * kBlock + kBlock / 2) * kAcross + column) * kBlock + kBlock / 2;
            EXPECT_NEAR(picture.samples[static_cast<size_t>(3 * middle)], greyOf(column, row), 3)
                << column << row;
        }
    }
}

class Orientation : public Modules, public testing::WithParamInterface<const char*> {};

TEST_P(Orientation, AllEightComeOutUprightAndAreKept) {
    for (const Sides& sides : kSides) {
        SCOPED_TRACE(sides.exif);
        const std::string path = files_.path(std::to_string(sides.exif));
        saveStored(GetParam(), path, sides);
        expectUpright(loaderOf(GetParam()), path);
        // The number itself stands in the file: as a SHORT of tag 274, in this machine's order.
        if (sides.exif == 1 || loaderOf(GetParam()) == "heif") continue;
        const char entry[] = {0x12, 1, 3, 0, 1, 0, 0, 0, static_cast<char>(sides.exif), 0};
        EXPECT_NE(contentOf(path).find(std::string(entry, sizeof entry)), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats,
                         Orientation,
                         testing::Values(VORN_TURNED_FORMATS),
                         [](const auto& format) { return std::string(format.param); });

// Cameras also write the other byte order.
TEST(ExifReader, ReadsBothByteOrdersAndLeavesOutWhatIsDamaged) {
    const uint8_t big[] = {'M', 'M', 0, '*', 0,    0,    0,    8,    0, 3,    1, 0x12, 0, 3,
                           0,   0,   0, 1,   0,    6,    0,    0,    1, 0x1A, 0, 5,    0, 0,
                           0,   1,   0, 0,   0,    0x2E, 1,    0x0F, 0, 2,    0, 0,    0, 3,
                           'A', 'b', 0, 0,   0x00, 0x00, 0x0B, 0xB8, 0, 0,    0, 10};
    const formats::Exif whole = formats::readExif(big, sizeof big);
    EXPECT_EQ(whole.orientation, 3);
    EXPECT_EQ(whole.xDpi, 300);
    ASSERT_EQ(whole.texts.size(), 1u);
    EXPECT_EQ(whole.texts[0].second, "Ab");
    for (size_t size = 0; size < sizeof big; ++size) {
        const std::vector<uint8_t> cut(big, big + size);  // its own block: reads beyond it show
        EXPECT_EQ(formats::readExif(cut.data(), size).xDpi, 0);
    }
}

}  // namespace
