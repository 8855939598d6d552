#include "formats/png/png_loader.h"

#include <png.h>
#include <zlib.h>

#include "tests/formats/format_files.h"

namespace {

using png::PngLoader;

// A file made with libpng itself.
struct PngFile {
    png_uint_32 width = 5;
    png_uint_32 height = 9;
    int colorType = PNG_COLOR_TYPE_RGB;
    int depth = 8;
    bool interlaced = false;
    std::vector<png_color> palette{};
    Bytes entryAlpha{};                       // of the palette's first entries
    std::vector<png_color_16> transparent{};  // the one colour that is see-through, or none
    std::vector<png_text> texts{};
    Bytes exif{};
    bool notesLast = false;  // texts and EXIF stand behind the pixels
    png_uint_32 xResolution = 0;
    png_uint_32 yResolution = 0;
    int resolutionUnit = PNG_RESOLUTION_METER;

    int channels() const {
        if (colorType == PNG_COLOR_TYPE_PALETTE) return 1;
        return (colorType & PNG_COLOR_MASK_COLOR ? 3 : 1) +
               (colorType & PNG_COLOR_MASK_ALPHA ? 1 : 0);
    }

    // Sample c of pixel (x, y).
    unsigned sample(png_uint_32 x, png_uint_32 y, int c) const {
        const unsigned value = noiseAt(x, y, c) & ((1u << depth) - 1);
        return palette.empty() ? value : value % static_cast<unsigned>(palette.size());
    }

    std::string bytes() const {
        std::string out;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(
            png, &out,
            [](png_structp writer, png_bytep data, size_t count) {
                const auto* text = reinterpret_cast<const char*>(data);
                static_cast<std::string*>(png_get_io_ptr(writer))->append(text, count);
            },
            nullptr);
        putHead(png, info);
        png_set_packing(png);
        const int passes = png_set_interlace_handling(png);
        for (int pass = 0; pass < passes; ++pass) {
            for (png_uint_32 y = 0; y < height; ++y) png_write_row(png, lineOf(y).data());
        }
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        return out;
    }

  private:
    void putNotes(png_structp png, png_infop info) const {
        if (!texts.empty()) png_set_text(png, info, texts.data(), static_cast<int>(texts.size()));
        Bytes copy = exif;
        if (!exif.empty())
            png_set_eXIf_1(png, info, static_cast<png_uint_32>(copy.size()), copy.data());
    }

    void putHead(png_structp png, png_infop info) const {
        png_set_IHDR(png, info, width, height, depth, colorType,
                     interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (!palette.empty())
            png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
        if (!entryAlpha.empty() || !transparent.empty())
            png_set_tRNS(png, info, entryAlpha.data(), static_cast<int>(entryAlpha.size()),
                         transparent.data());
        if (xResolution) png_set_pHYs(png, info, xResolution, yResolution, resolutionUnit);
        if (!notesLast) putNotes(png, info);
        png_write_info(png, info);
        if (notesLast) putNotes(png, info);
    }

    Bytes lineOf(png_uint_32 y) const {
        Bytes line;
        for (png_uint_32 x = 0; x < width; ++x) {
            for (int c = 0; c < channels(); ++c) {
                if (depth == 16) line.push_back(static_cast<uint8_t>(sample(x, y, c) >> 8));
                line.push_back(static_cast<uint8_t>(sample(x, y, c)));
            }
        }
        return line;
    }
};

// Compares the samples of a file whose channels come out as they stand in it.
void expectSamples(const LoadedImage& loaded, const PngFile& file) {
    const bool whole = file.depth >= 8 || file.colorType == PNG_COLOR_TYPE_PALETTE;
    const unsigned scale = whole ? 1 : 255 / ((1u << file.depth) - 1);
    size_t at = 0;
    for (png_uint_32 y = 0; y < file.height; ++y) {
        for (png_uint_32 x = 0; x < file.width; ++x) {
            for (int c = 0; c < file.channels(); ++c)
                ASSERT_EQ(loaded.next(at), file.sample(x, y, c) * scale) << x << ' ' << y;
        }
    }
}

std::vector<png_color> colors(size_t count) {
    std::vector<png_color> palette;
    for (size_t i = 0; i < count; ++i)
        palette.push_back({static_cast<png_byte>(i), static_cast<png_byte>(255 - i),
                           static_cast<png_byte>(i * 7)});
    return palette;
}

TEST(PngLoader, ReadsEveryColourTypeAndDepthPlainAndInterlaced) {
    const struct {
        int colorType;
        const char* summary;
        std::vector<int> depths;
    } kinds[] = {{PNG_COLOR_TYPE_GRAY, "Gray 1", {1, 2, 4, 8, 16}},
                 {PNG_COLOR_TYPE_GRAY_ALPHA, "Gray 2", {8, 16}},
                 {PNG_COLOR_TYPE_RGB, "RGB 3", {8, 16}},
                 {PNG_COLOR_TYPE_RGB_ALPHA, "RGB 4", {8, 16}},
                 {PNG_COLOR_TYPE_PALETTE, "CMAPPED 1", {1, 2, 4, 8}}};
    const ScratchDirectory files;
    for (const auto& kind : kinds) {
        for (const int depth : kind.depths) {
            for (const bool interlaced : {false, true}) {
                PngFile file{.colorType = kind.colorType, .depth = depth, .interlaced = interlaced};
                if (kind.colorType == PNG_COLOR_TYPE_PALETTE) file.palette = colors(1u << depth);
                const LoadedImage got = load<PngLoader>(files.write("a", file.bytes()));
                Bytes entries;
                for (const png_color& color : file.palette)
                    entries.insert(entries.end(), {color.red, color.green, color.blue});
                EXPECT_EQ(paletteOf(got.image), entries);
                EXPECT_EQ(summaryOf(got.image),
                          "5x9 " + std::string(kind.summary) + " of " +
                              (depth == 16 ? "16/16" : std::to_string(depth)) + " bits" +
                              (got.image.channels % 2 ? "" : " alpha"));
                expectSamples(got, file);
            }
        }
    }
}

TEST(PngLoader, TurnsTransparencyIntoAlpha) {
    const ScratchDirectory files;
    PngFile indexed{.colorType = PNG_COLOR_TYPE_PALETTE, .palette = colors(4)};
    indexed.entryAlpha = {0, 77};
    const LoadedImage fromPalette = load<PngLoader>(files.write("a", indexed.bytes()));
    ASSERT_EQ(fromPalette.image.channels, 4);
    EXPECT_TRUE(fromPalette.image.alpha);
    EXPECT_EQ(fromPalette.image.colorSpace, VORN_CS_RGB);
    EXPECT_EQ(tagsOf(fromPalette.image).count(ITAG_Palette), 0u);
    for (png_uint_32 x = 0; x < indexed.width; ++x) {
        const unsigned entry = indexed.sample(x, 0, 0);
        const uint8_t* pixel = &fromPalette.samples[4 * x];
        EXPECT_EQ(pixel[1], 255 - entry);
        EXPECT_EQ(pixel[3], entry == 0 ? 0 : entry == 1 ? 77 : 255);
    }

    PngFile grey{.colorType = PNG_COLOR_TYPE_GRAY, .depth = 2};
    grey.transparent = {{.index = 0, .red = 0, .green = 0, .blue = 0, .gray = 3}};
    const LoadedImage fromGrey = load<PngLoader>(files.write("b", grey.bytes()));
    ASSERT_EQ(fromGrey.image.channels, 2);
    EXPECT_EQ(fromGrey.image.significantBits, 2);
    for (png_uint_32 x = 0; x < grey.width; ++x) {
        EXPECT_EQ(fromGrey.samples[2 * x], grey.sample(x, 0, 0) * 85);
        EXPECT_EQ(fromGrey.samples[2 * x + 1], grey.sample(x, 0, 0) == 3 ? 0 : 255);
    }
}

png_text text(int compression, const char* keyword, const char* value) {
    png_text made{};
    made.compression = compression;
    made.key = const_cast<char*>(keyword);
    made.text = const_cast<char*>(value);
    return made;
}

// Texts of PNG's own come before those in EXIF.
TEST(PngLoader, ReadsTextsAndExifBeforeAndBehindThePixels) {
    const ScratchDirectory files;
    const std::string longText(5000, 'x');
    PngFile file;
    file.texts = {text(PNG_TEXT_COMPRESSION_NONE, "Author", "Andr\xE9"),
                  text(PNG_TEXT_COMPRESSION_zTXt, "Description", longText.c_str()),
                  text(PNG_TEXT_COMPRESSION_NONE, "Comment", "not this one"),
                  text(PNG_ITXT_COMPRESSION_NONE, "Title", "\xE7\x8C\xAB"),
                  text(PNG_ITXT_COMPRESSION_zTXt, "PageName", "p\xC3\xA9"),
                  text(PNG_TEXT_COMPRESSION_NONE, "Source", "a camera"),
                  text(PNG_TEXT_COMPRESSION_NONE, "Software", ""),
                  text(PNG_TEXT_COMPRESSION_NONE, "Creation Time", "yesterday")};
    // Turned clockwise (6), made by "ab", described as "no".
    file.exif = {'M', 'M', 0,   '*', 0, 0, 0, 8,  0, 3, 1, 14, 0, 2, 0,   0,
                 0,   3,   'n', 'o', 0, 0, 1, 15, 0, 2, 0, 0,  0, 3, 'a', 'b',
                 0,   0,   1,   18,  0, 3, 0, 0,  0, 1, 0, 6,  0, 0};
    for (const bool last : {false, true}) {
        SCOPED_TRACE(last);
        file.notesLast = last;
        const auto image = load<PngLoader>(files.write("a", file.bytes())).image;
        EXPECT_EQ(image.orientation, 3);
        EXPECT_EQ(textOf(image, ITAG_Make), "ab");
        EXPECT_EQ(textOf(image, ITAG_Artist), "Andr\xC3\xA9");
        EXPECT_EQ(textOf(image, ITAG_Description), longText.substr(0, 4096));
        EXPECT_EQ(textOf(image, ITAG_DocumentName), "\xE7\x8C\xAB");
        EXPECT_EQ(textOf(image, ITAG_PageName), "p\xC3\xA9");
        EXPECT_EQ(textOf(image, ITAG_Model), "a camera");
        EXPECT_EQ(textOf(image, ITAG_Software), "(none)");
        EXPECT_EQ(textOf(image, ITAG_DateTime), "yesterday");
    }
}

TEST(PngLoader, ReadsResolutionAndAspect) {
    const ScratchDirectory files;
    const auto tagsWith = [&](png_uint_32 x, png_uint_32 y, int unit) {
        const PngFile file{.xResolution = x, .yResolution = y, .resolutionUnit = unit};
        return tagsOf(load<PngLoader>(files.write("a", file.bytes())).image);
    };
    auto tags = tagsWith(11811, 2835, PNG_RESOLUTION_METER);
    EXPECT_EQ(tags[ITAG_XDPI], 300u);
    EXPECT_EQ(tags[ITAG_YDPI], 72u);
    tags = tagsWith(4, 3, PNG_RESOLUTION_UNKNOWN);
    EXPECT_EQ(tags[ITAG_XAspect], 3u);
    EXPECT_EQ(tags[ITAG_YAspect], 4u);
    EXPECT_TRUE(tagsWith(1, 1, PNG_RESOLUTION_METER).empty());
}

TEST(PngLoader, FindsDamageAnywhere) {
    const ScratchDirectory files;
    for (const bool interlaced : {false, true}) {
        PngFile file{.width = 3, .height = 3, .interlaced = interlaced, .xResolution = 300};
        file.texts = {text(PNG_TEXT_COMPRESSION_zTXt, "Title", "some text")};
        file.notesLast = interlaced;
        const std::string whole = file.bytes();
        for (size_t at = 8; at < whole.size(); ++at) {
            EXPECT_EQ(loadFailure<PngLoader>(files.write("cut", whole.substr(0, at))),
                      formats::kDamaged)
                << at;
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ 0x10);
            EXPECT_EQ(loadFailure<PngLoader>(files.write("changed", changed)), formats::kDamaged)
                << at;
        }
    }
}

// The head of a PNG file with its checksum in order.
std::string headOf(uint32_t width, uint32_t height) {
    std::string bytes = PngFile{}.bytes();
    bytes.replace(16, 8, big(width, 4) + big(height, 4));
    return bytes.replace(29, 4, big(crc32(0, reinterpret_cast<const Bytef*>(&bytes[12]), 17), 4));
}

TEST(PngLoader, RefusesPicturesThatAreTooLarge) {
    const ScratchDirectory files;
    for (const auto& [width, height, code] : {std::tuple{65537u, 1u, formats::kUnsupported},
                                              {1u, 2000000u, formats::kUnsupported},
                                              {0u, 1u, formats::kDamaged}})
        EXPECT_EQ(loadFailure<PngLoader>(files.write("a", headOf(width, height))), code) << width;
}

}  // namespace
