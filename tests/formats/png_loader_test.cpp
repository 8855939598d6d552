#include "formats/png/png_loader.h"

#include <zlib.h>

#include "tests/formats/format_files.h"

namespace {

using png::PngLoader;
using namespace std::string_literals;

const Bytef* bytesIn(const std::string& text) {
    return reinterpret_cast<const Bytef*>(text.data());
}

std::string chunk(const std::string& name, const std::string& data) {
    const std::string body = name + data;
    return big(data.size(), 4) + body +
           big(crc32(0, bytesIn(body), static_cast<uInt>(body.size())), 4);
}

std::string deflated(const std::string& text) {
    uLongf size = compressBound(text.size());
    Bytes out(size);
    compress(out.data(), &size, bytesIn(text), text.size());
    return {out.begin(), out.begin() + static_cast<ptrdiff_t>(size)};
}

enum : char { kGrey = 0, kColor = 2, kIndexed = 3, kGreyAlpha = 4, kColorAlpha = 6 };

struct PngFile {
    uint32_t width = 5, height = 9;
    char colorType = kColor;
    char depth = 8;
    bool interlaced = false;
    Bytes palette{};
    std::string transparency{};  // of the palette's first entries, or the one colour
    std::string notes{};         // chunks
    bool notesLast = false;      // they stand behind the pixels

    int channels() const {
        return colorType == kIndexed ? 1 : (colorType & 2 ? 3 : 1) + (colorType & 4 ? 1 : 0);
    }

    // Sample c of pixel (x, y).
    unsigned sample(uint32_t x, uint32_t y, int c) const {
        const unsigned value = noiseAt(x, y, c) & ((1u << depth) - 1);
        return palette.empty() ? value : value % static_cast<unsigned>(palette.size() / 3);
    }

    std::string bytes() const {
        const std::string head = big(width, 4) + big(height, 4) + depth + colorType + "\0\0"s;
        return "\x89PNG\r\n\x1A\n" + chunk("IHDR", head + (interlaced ? '\1' : '\0')) +
               (palette.empty() ? "" : chunk("PLTE", {palette.begin(), palette.end()})) +
               (transparency.empty() ? "" : chunk("tRNS", transparency)) +
               (notesLast ? "" : notes) + chunk("IDAT", deflated(lines())) +
               (notesLast ? notes : "") + chunk("IEND", "");
    }

  private:
    std::string lines() const {
        if (!interlaced) return pass(0, 0, 1, 1);
        return pass(0, 0, 8, 8) + pass(4, 0, 8, 8) + pass(0, 4, 4, 8) + pass(2, 0, 4, 4) +
               pass(0, 2, 2, 4) + pass(1, 0, 2, 2) + pass(0, 1, 1, 2);
    }

    // Of every so many pixels, each line behind the number of its filter.
    std::string pass(uint32_t x0, uint32_t y0, uint32_t across, uint32_t down) const {
        std::string all;
        for (uint32_t y = y0; x0 < width && y < height; y += down) {
            all += '\0';
            unsigned pending = 0;
            int count = 0;
            for (uint32_t x = x0; x < width; x += across) {
                for (int c = 0; c < channels(); ++c) {
                    pending = pending << depth | sample(x, y, c);
                    for (count += depth; count >= 8; count -= 8)
                        all += static_cast<char>(pending >> (count - 8));
                }
            }
            if (count > 0) all += static_cast<char>(pending << (8 - count));
        }
        return all;
    }
};

// Compares the samples of a file whose channels come out as they stand in it.
void expectSamples(const LoadedImage& loaded, const PngFile& file) {
    const bool whole = file.depth >= 8 || file.colorType == kIndexed;
    const unsigned scale = whole ? 1 : 255 / ((1u << file.depth) - 1);
    size_t at = 0;
    for (uint32_t y = 0; y < file.height; ++y) {
        for (uint32_t x = 0; x < file.width; ++x) {
            for (int c = 0; c < file.channels(); ++c)
                ASSERT_EQ(loaded.next(at), file.sample(x, y, c) * scale) << x << ' ' << y;
        }
    }
}

Bytes colors(int count) {
    Bytes palette;
    for (int i = 0; i < count; ++i)
        for (const int sample : {i, 255 - i, i * 7})
            palette.push_back(static_cast<uint8_t>(sample));
    return palette;
}

TEST(PngLoader, ReadsEveryColourTypeAndDepthPlainAndInterlaced) {
    const struct {
        char colorType;
        const char* summary;
        std::vector<char> depths;
    } kinds[] = {{kGrey, "Gray 1", {1, 2, 4, 8, 16}},
                 {kGreyAlpha, "Gray 2", {8, 16}},
                 {kColor, "RGB 3", {8, 16}},
                 {kColorAlpha, "RGB 4", {8, 16}},
                 {kIndexed, "CMAPPED 1", {1, 2, 4, 8}}};
    const ScratchDirectory files;
    for (const auto& kind : kinds) {
        for (const char depth : kind.depths) {
            for (const bool interlaced : {false, true}) {
                PngFile file{.colorType = kind.colorType, .depth = depth, .interlaced = interlaced};
                if (kind.colorType == kIndexed) file.palette = colors(1 << depth);
                const LoadedImage got = load<PngLoader>(files.write("a", file.bytes()));
                EXPECT_EQ(paletteOf(got.image), file.palette);
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
    const PngFile indexed{.colorType = kIndexed, .palette = colors(4), .transparency = "\0\x4D"s};
    const LoadedImage fromPalette = load<PngLoader>(files.write("a", indexed.bytes()));
    EXPECT_EQ(summaryOf(fromPalette.image), "5x9 RGB 4 of 8 bits alpha");
    EXPECT_EQ(tagsOf(fromPalette.image).count(ITAG_Palette), 0u);
    for (uint32_t x = 0; x < indexed.width; ++x) {
        const unsigned entry = indexed.sample(x, 0, 0);
        EXPECT_EQ(fromPalette.samples.at(4 * x + 1), 255 - entry);
        EXPECT_EQ(fromPalette.samples.at(4 * x + 3), entry == 0 ? 0 : entry == 1 ? 77 : 255);
    }

    const PngFile grey{.colorType = kGrey, .depth = 2, .transparency = "\0\3"s};
    const LoadedImage fromGrey = load<PngLoader>(files.write("b", grey.bytes()));
    EXPECT_EQ(summaryOf(fromGrey.image), "5x9 Gray 2 of 2 bits alpha");
    for (uint32_t x = 0; x < grey.width; ++x) {
        EXPECT_EQ(fromGrey.samples.at(2 * x), grey.sample(x, 0, 0) * 85);
        EXPECT_EQ(fromGrey.samples.at(2 * x + 1), grey.sample(x, 0, 0) == 3 ? 0 : 255);
    }
}

// Texts of PNG's own come before those in EXIF.
TEST(PngLoader, ReadsTextsAndExifBeforeAndBehindThePixels) {
    const ScratchDirectory files;
    const std::string longText(5000, 'x');
    PngFile file;
    file.notes = chunk("tEXt", "Author\0Andr\xE9"s) + chunk("tEXt", "Comment\0not this one"s) +
                 chunk("tEXt", "Source\0a camera"s) + chunk("tEXt", "Software\0"s) +
                 chunk("tEXt", "Creation Time\0yesterday"s) +
                 chunk("zTXt", "Description\0\0"s + deflated(longText)) +
                 chunk("iTXt", "Title\0\0\0\0\0\xE7\x8C\xAB"s) +
                 chunk("iTXt", "PageName\0\1\0\0\0"s + deflated("p\xC3\xA9")) +
                 // Turned clockwise (6), made by "ab", described as "no".
                 chunk("eXIf",
                       "MM\0*\0\0\0\x08\0\3\1\x0E\0\2\0\0\0\3no\0\0"
                       "\1\x0F\0\2\0\0\0\3ab\0\0\1\x12\0\3\0\0\0\1\0\6\0\0"s);
    const std::pair<uint32_t, std::string> texts[] = {{ITAG_Make, "ab"},
                                                      {ITAG_Artist, "Andr\xC3\xA9"},
                                                      {ITAG_Description, longText.substr(0, 4096)},
                                                      {ITAG_DocumentName, "\xE7\x8C\xAB"},
                                                      {ITAG_PageName, "p\xC3\xA9"},
                                                      {ITAG_Model, "a camera"},
                                                      {ITAG_Software, "(none)"},
                                                      {ITAG_DateTime, "yesterday"}};
    for (const bool last : {false, true}) {
        SCOPED_TRACE(last);
        file.notesLast = last;
        const auto image = load<PngLoader>(files.write("a", file.bytes())).image;
        EXPECT_EQ(image.orientation, 3);
        for (const auto& [id, text] : texts) EXPECT_EQ(textOf(image, id), text);
        EXPECT_EQ(image.tags.words().size(), 2 * tagsOf(image).size()) << "none twice";
    }
}

TEST(PngLoader, ReadsResolutionAndAspect) {
    const ScratchDirectory files;
    const auto wordsWith = [&](uint32_t x, uint32_t y, char unit) {
        const PngFile file{.notes = chunk("pHYs", big(x, 4) + big(y, 4) + unit)};
        return load<PngLoader>(files.write("a", file.bytes())).image.tags.words();
    };
    using Words = std::vector<VORN_Word>;
    EXPECT_EQ(wordsWith(11811, 2835, 1), (Words{ITAG_XDPI, 300, ITAG_YDPI, 72}));
    EXPECT_EQ(wordsWith(4, 3, 0), (Words{ITAG_XAspect, 3, ITAG_YAspect, 4}));
    EXPECT_EQ(wordsWith(1, 1, 1), Words{});
}

TEST(PngLoader, FindsDamageAnywhere) {
    const ScratchDirectory files;
    for (const bool interlaced : {false, true}) {
        const PngFile file{.width = 3,
                           .height = 3,
                           .interlaced = interlaced,
                           .notes = chunk("pHYs", big(300, 4) + big(300, 4) + '\0') +
                                    chunk("zTXt", "Title\0\0"s + deflated("some text")),
                           .notesLast = interlaced};
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

TEST(PngLoader, RefusesPicturesThatAreTooLarge) {
    const ScratchDirectory files;
    for (const auto& [width, height, code] : {std::tuple{65537u, 1u, formats::kUnsupported},
                                              {1u, 2000000u, formats::kUnsupported},
                                              {0u, 1u, formats::kDamaged}})
        EXPECT_EQ(loadFailure<PngLoader>(files.write("a", PngFile{width, height}.bytes())), code)
            << width;
}

}  // namespace
