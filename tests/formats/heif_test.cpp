#include <vorn/host.h>

#include <cstdlib>
#include <cstring>

#include "formats/heif/heif_loader.h"
#include "formats/heif/heif_saver.h"
#include "formats/heif/hevc_size.h"
#include "tests/formats/format_files.h"
#include "tests/formats/heif_files.h"
#ifdef VORN_HAS_PNG
#include "formats/png/png_loader.h"
#endif

namespace {

using heif::AvifSaver;
using heif::HeifLoader;
using heif::HeifSaver;

// A picture to save, and the samples with only as many bits as the file shall have.
struct Kind {
    VORN_Word width, height, channels, bytes;
    unsigned bits;

    VORN_Word colorSpace() const { return channels < 3 ? VORN_CS_GRAY : VORN_CS_RGB; }

    std::vector<uint8_t> noise() const {
        auto samples = noiseOf(width * height * channels * bytes);
        const unsigned most = (1u << bits) - 1;
        for (size_t i = 0; bytes == 2 && i < samples.size(); i += 2) {
            const unsigned value = (samples[i] | samples[i + 1] << 8u) & most;
            const unsigned sample = (value * 65535 + most / 2) / most;
            samples[i] = static_cast<uint8_t>(sample);
            samples[i + 1] = static_cast<uint8_t>(sample >> 8);
        }
        return samples;
    }

    // Soft, as compression with loss wants it.
    std::vector<uint8_t> slope() const {
        std::vector<uint8_t> samples;
        for (VORN_Word i = 0; i < width * height * channels; ++i) {
            const auto sample =
                static_cast<uint8_t>(i / channels % width * 2 + i / channels / width);
            samples.insert(samples.end(), bytes, sample);
        }
        return samples;
    }
};

using SaveFunction = void (*)(const std::string&,
                              std::vector<VORN_Word>,
                              const std::vector<uint8_t>&);

struct Format {
    const char* name;
    SaveFunction save;
    unsigned mostBits;
};
const Format kFormats[] = {{"avif", &save<AvifSaver>, 12}, {"heif", &save<HeifSaver>, 10}};

class Heif : public testing::Test {
  protected:
    void saveKind(const Format& format,
                  const Kind& kind,
                  const std::vector<uint8_t>& samples,
                  const std::vector<VORN_Word>& more = {}) {
        auto words =
            imageWords(kind.width, kind.height, kind.channels, kind.colorSpace(), kind.bytes);
        words.insert(words.end(), more.begin(), more.end());
        format.save(path_, words, samples);
    }

    ScratchDirectory files_;
    std::string path_ = files_.path("a.heif");
    UserSettings settings_;
};

TEST_F(Heif, KeepsEveryPixelWithoutLoss) {
    for (const Format& format : kFormats) {
        settings_.store(format.name, "Lossless=true");
        for (const auto& [width, height] : {std::pair{37, 21}, {1, 1}, {64, 2}}) {
            for (const VORN_Word channels : {1, 2, 3, 4}) {
                for (const unsigned bits : {8u, format.mostBits}) {
                    SCOPED_TRACE(testing::Message() << format.name << width << channels << bits);
                    const Kind kind{static_cast<VORN_Word>(width), static_cast<VORN_Word>(height),
                                    channels, bits > 8 ? 2u : 1u, bits};
                    const auto samples = kind.noise();
                    saveKind(format, kind, samples);
                    const LoadedImage back = load<HeifLoader>(path_);
                    EXPECT_EQ(back.image.channels, static_cast<int32_t>(channels));
                    EXPECT_EQ(back.image.colorSpace, static_cast<int32_t>(kind.colorSpace()));
                    EXPECT_EQ(back.image.alpha, channels % 2 == 0);
                    EXPECT_EQ(back.image.significantBits, static_cast<int32_t>(bits));
                    EXPECT_EQ(back.samples, samples);
                }
            }
        }
    }
}

TEST_F(Heif, StaysCloseWithLossAndDoesWhatIsSet) {
    const Kind kind{61, 43, 3, 1, 8};
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.name);
        const auto sizeWith = [&](const char* settings, const std::vector<uint8_t>& samples) {
            settings_.store(format.name, settings);
            saveKind(format, kind, samples);
            return contentOf(path_).size();
        };
        for (const char* subsampling : {"444", "422", "420"}) {
            const auto samples = kind.slope();
            sizeWith((std::string("Quality=95\nSubsampling=") + subsampling).c_str(), samples);
            const LoadedImage back = load<HeifLoader>(path_);
            ASSERT_EQ(back.samples.size(), samples.size());
            for (size_t i = 0; i < samples.size(); ++i)
                ASSERT_NEAR(back.samples[i], samples[i], 3) << subsampling << i;
        }
        const auto noise = kind.noise();
        EXPECT_LT(sizeWith("Quality=10", noise), sizeWith("", noise));
        EXPECT_LT(sizeWith("", noise), sizeWith("Lossless=true", noise));
        EXPECT_LT(sizeWith("", noise), sizeWith("Subsampling=444", noise));
        EXPECT_EQ(sizeWith("", noise), sizeWith("Subsampling=420", noise));
        EXPECT_NE(sizeWith("Effort=0", noise), sizeWith("Effort=8", noise));
        for (const char* bad : {"Quality=101", "Effort=10", "Subsampling=411"})
            EXPECT_EQ(failureOf([&] { sizeWith(bad, noise); }), formats::kBadOption) << bad;
    }
}

TEST_F(Heif, KeepsTextsAndResolution) {
    for (const Format& format : kFormats) {
        const Kind kind{2, 3, 1, 1, 8};
        saveKind(format, kind, kind.noise(), {ITAG_XDPI, 300, ITAG_YDPI, 72});
        EXPECT_EQ(tagsOf(load<HeifLoader>(path_).image)[ITAG_YDPI], 72u);
        saveKind(format, kind, kind.noise(), {ITAG_Artist, word("Andr\xC3\xA9"), ITAG_XDPI, 300});
        const LoadedImage back = load<HeifLoader>(path_);
        EXPECT_EQ(textOf(back.image, ITAG_Artist), "Andr\xC3\xA9");
        EXPECT_EQ(tagsOf(back.image)[ITAG_XDPI], 300u);
        EXPECT_EQ(tagsOf(back.image).count(ITAG_PageCount), 0u);
    }
}

// A file made with libheif itself: red and green side by side, and another page that is blue. What
// the first says about its orientation stands there twice, as cameras do it.
void writeTurned(const std::string& path, heif_orientation orientation) {
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context, heif_compression_AV1, &encoder);
    heif_encoder_set_lossy_quality(encoder, 100);
    heif_encoder_set_parameter_string(encoder, "chroma", "444");
    for (const bool main : {false, true}) {
        heif_image* image = nullptr;
        heif_image_create(64, 32, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
        heif_image_add_plane(image, heif_channel_interleaved, 64, 32, 8);
        int step = 0;
        uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &step);
        for (int i = 0; i < 64 * 32; ++i) {
            uint8_t* pixel = plane + i / 64 * step + i % 64 * 3;
            std::memset(pixel, 0, 3);
            pixel[!main ? 2 : i % 64 < 32 ? 0 : 1] = 255;
        }
        heif_encoding_options* options = heif_encoding_options_alloc();
        if (main) options->image_orientation = orientation;
        heif_image_handle* handle = nullptr;
        heif_context_encode_image(context, image, encoder, options, &handle);
        const uint8_t exif[] = {'I',
                                'I',
                                '*',
                                0,
                                8,
                                0,
                                0,
                                0,
                                1,
                                0,
                                0x12,
                                1,
                                3,
                                0,
                                1,
                                0,
                                0,
                                0,
                                static_cast<uint8_t>(orientation),
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                0};
        if (main) {
            heif_context_set_primary_image(context, handle);
            heif_context_add_exif_metadata(context, handle, exif, sizeof exif);
        }
        heif_image_handle_release(handle);
        heif_encoding_options_free(options);
        heif_image_release(image);
    }
    EXPECT_EQ(heif_context_write_to_file(context, path.c_str()).code, heif_error_Ok);
    heif_encoder_release(encoder);
    heif_context_free(context);
}

TEST_F(Heif, TurnsOnceAndOpensTheWantedPageMainOneFirst) {
    writeTurned(path_, heif_orientation_rotate_90_cw);
    const LoadedImage main = load<HeifLoader>(path_);
    EXPECT_EQ(main.image.orientation, 0);
    ASSERT_EQ(main.image.width, 32);
    ASSERT_EQ(main.image.height, 64);
    EXPECT_NEAR(main.samples[3 * 32 * 8], 255, 3);       // red on top
    EXPECT_NEAR(main.samples[3 * 32 * 56 + 1], 255, 3);  // and green below
    EXPECT_EQ(tagsOf(main.image)[ITAG_PageCount], 2u);
    const LoadedImage other = load<HeifLoader>(path_, {.page = 2});
    EXPECT_EQ(other.image.width, 64);
    EXPECT_NEAR(other.samples[2], 255, 3);
    EXPECT_EQ(failureOf([&] { load<HeifLoader>(path_, {.page = 3}); }), formats::kNoSuchPage);
}

// With the bytes between zeros and what might be taken for the start of a unit.
std::vector<uint8_t> unitOf(const std::string& bits) {
    std::vector<uint8_t> bytes;
    for (size_t at = 0; at + 8 <= bits.size(); at += 8) {
        const auto byte = static_cast<uint8_t>(std::stoi(bits.substr(at, 8), nullptr, 2));
        const size_t n = bytes.size();
        if (n >= 2 && bytes[n - 1] == 0 && bytes[n - 2] == 0 && byte < 4) bytes.push_back(3);
        bytes.push_back(byte);
    }
    return bytes;
}

TEST(HevcSize, IsFoundBehindWhateverStandsInFrontOfIt) {
    const std::string head = "01000010000000010000";
    const std::string profile(88, '0');
    const std::string level = "01011010";
    const std::string rest(12, '0');
    const std::string size = "000000100000100000110001" + std::string(8, '1');
    const std::string heads[] = {
        "0000" + profile + level + "1010", "0000" + profile + level + "1001000",
        "0100" + profile + level + "1101" + rest + profile + level + level + "00101010"};
    for (const std::string& each : heads)
        EXPECT_EQ(heif::codedPixels(unitOf(head + each + size)), 64 * 48);
    EXPECT_EQ(heif::codedPixels(unitOf("01000000" + heads[0] + size)), 0);
    EXPECT_EQ(heif::codedPixels({}), 0);
}

TEST_F(Heif, RefusesWhatIsNotRight) {
    for (const char* other : {"", "ftypheic", "0000moovheic",
                              "\0\0\0\x10"
                              "ftypmp42\0\0\0\0mp42"})
        EXPECT_EQ(loadFailure<HeifLoader>(files_.write("b", other)), formats::kNotThisFormat);
    for (const Format& format : kFormats) {
        const Kind kind{64, 64, 3, 1, 8};
        saveKind(format, kind, kind.noise());
        const std::string file = contentOf(path_);
        const auto open = [&](uint32_t width, uint32_t height) {
            return loadFailure<HeifLoader>(files_.write("b", withSize(file, width, height)));
        };
        EXPECT_EQ(open(65536, 65536), formats::kOutOfMemory);
        EXPECT_EQ(open(65535, 16385), formats::kOutOfMemory);
        EXPECT_EQ(open(60, 64), formats::kDamaged);
        // The head of the compressed data, of which decoders like to complain.
        testing::internal::CaptureStderr();
        for (size_t i = file.find("mdat") + 4; i < file.find("mdat") + 40; ++i) {
            std::string broken = file;
            broken[i] = static_cast<char>(~broken[i]);
            loadFailure<HeifLoader>(files_.write("b", broken));
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        for (const auto& [channels, colorSpace] :
             {std::pair{4, VORN_CS_CMYK}, {1, VORN_CS_CMAPPED}})
            EXPECT_EQ(
                failureOf([&, n = channels, c = colorSpace] {
                    format.save(
                        files_.path("c"),
                        imageWords(1, 1, static_cast<VORN_Word>(n), static_cast<VORN_Word>(c)), {});
                }),
                formats::kCannotSave);
    }
}

#ifdef VORN_HAS_PNG
TEST_F(Heif, AgreesWithTheReferenceDecoder) {
    if (std::system("heif-convert >/dev/null 2>&1") / 256 == 127)
        GTEST_SKIP() << "libheif-examples is not installed";
    const auto run = [&](const std::string& command) {
        return std::system(("cd " + files_.path("") + " && " + command + " >/dev/null").c_str());
    };
    for (const Format& format : kFormats) {
        for (const VORN_Word channels : {1, 3, 4}) {
            for (const char* settings : {"Lossless=true", ""}) {
                SCOPED_TRACE(testing::Message() << format.name << channels << settings);
                const Kind kind{61, 43, channels, 1, 8};
                const auto samples = kind.noise();
                settings_.store(format.name, settings);
                saveKind(format, kind, samples);
                ASSERT_EQ(run("heif-convert a.heif a.png"), 0);
                auto theirs = load<png::PngLoader>(files_.path("a.png")).samples;
                for (size_t i = 0; channels == 1 && i < samples.size(); ++i)
                    theirs[i] = theirs[3 * i];  // grey became colours
                if (channels == 1) theirs.resize(samples.size());
                EXPECT_EQ(load<HeifLoader>(path_).samples, theirs);
                if (*settings) {
                    EXPECT_EQ(samples, theirs);
                }
            }
        }
        const std::string other = std::string("heif-enc a.png -o b.") + format.name;
        ASSERT_EQ(run(other + " && heif-convert b." + format.name + " b.png"), 0);
        EXPECT_EQ(load<HeifLoader>(files_.path("b.") + format.name).samples,
                  load<png::PngLoader>(files_.path("b.png")).samples);
    }
}
#endif

}  // namespace
