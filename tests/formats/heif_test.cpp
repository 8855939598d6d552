#include "formats/heif/heif_loader.h"
#include "formats/heif/heif_saver.h"
#include "formats/heif/hevc_size.h"
#include "tests/formats/format_files.h"

namespace {

using heif::AvifSaver;
using heif::HeifLoader;
using heif::HeifSaver;

struct Format {
    const char* name;
    void (*save)(const std::string&, std::vector<VORN_Word>, const Bytes&);
    int32_t mostBits;
};
const Format kFormats[] = {{"avif", &save<AvifSaver>, 12}, {"heif", &save<HeifSaver>, 10}};

class Heif : public FormatTest {
  protected:
    std::string path_ = files_.path("a.heif");
};

TEST_F(Heif, StaysCloseWithLossAndDoesWhatIsSet) {
    const VORN_Word width = 61, height = 43;
    const auto words = imageWords(width, height, 3, VORN_CS_RGB);
    Bytes slope;
    for (VORN_Word i = 0; i < width * height; ++i)
        slope.insert(slope.end(), 3, static_cast<uint8_t>(i % width * 2 + i / width));
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.name);
        for (const char* subsampling : {"444", "422", "420"}) {
            settings_.store(format.name,
                            (std::string("Quality=95\nSubsampling=") + subsampling).c_str());
            format.save(path_, words, slope);
            EXPECT_LE(furthest(load<HeifLoader>(path_).samples, slope), 3) << subsampling;
        }
        const auto fileWith = [&](const char* settings) {
            settings_.store(format.name, settings);
            format.save(path_, words, noiseOf(width * height * 3));
            return contentOf(path_);
        };
        EXPECT_EQ(fileWith(""), fileWith("Subsampling=420"));
        EXPECT_EQ(fileWith("Quality=90"), fileWith("Quality=90\nSubsampling=444"));
        EXPECT_NE(fileWith("Effort=0"), fileWith("Effort=8"));
        format.save(path_, imageWords(2, 3, 1, VORN_CS_GRAY, 2), noiseOf(12));
        const formats::Description image = load<HeifLoader>(path_).image;
        EXPECT_EQ(image.significantBits, format.mostBits);
        EXPECT_EQ(tagsOf(image).count(ITAG_PageCount), 0u);
    }
}

// A file made with libheif itself: red and green side by side, and another page that is blue. That
// the first is to be turned clockwise stands there twice, as cameras do it.
void writeTurned(const std::string& path) {
    constexpr uint8_t kExif[26] = "II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0";
    const heif::Owner<heif_context> context(heif_context_alloc());
    heif_encoder* encoder = nullptr;
    heif_context_get_encoder_for_format(context.get(), heif_compression_AV1, &encoder);
    const heif::Owner<heif_encoder> encoderOwner(encoder);
    heif_encoder_set_lossy_quality(encoder, 100);
    heif_encoder_set_parameter_string(encoder, "chroma", "444");
    for (const bool main : {false, true}) {
        heif_image* image = nullptr;
        heif_image_create(64, 32, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
        const heif::Owner<heif_image> imageOwner(image);
        heif_image_add_plane(image, heif_channel_interleaved, 64, 32, 8);
        int step = 0;
        uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &step);
        for (int i = 0; i < 64 * 32; ++i) {
            uint8_t* pixel = plane + i / 64 * step + i % 64 * 3;
            std::fill_n(pixel, 3, uint8_t{0});
            pixel[!main ? 2 : i % 64 < 32 ? 0 : 1] = 255;
        }
        const heif::Owner<heif_encoding_options> options(heif_encoding_options_alloc());
        if (main) options->image_orientation = heif_orientation_rotate_90_cw;
        heif_image_handle* handle = nullptr;
        heif_context_encode_image(context.get(), image, encoder, options.get(), &handle);
        const heif::Owner<heif_image_handle> handleOwner(handle);
        if (!main) continue;
        heif_context_set_primary_image(context.get(), handle);
        heif_context_add_exif_metadata(context.get(), handle, kExif, sizeof kExif);
    }
    EXPECT_EQ(heif_context_write_to_file(context.get(), path.c_str()).code, heif_error_Ok);
}

TEST_F(Heif, TurnsOnceAndOpensTheWantedPageMainOneFirst) {
    writeTurned(path_);
    const LoadedImage main = load<HeifLoader>(path_);
    EXPECT_EQ(main.image.orientation, 0);
    EXPECT_EQ(summaryOf(main.image), "32x64 RGB 3 of 8 bits");
    EXPECT_NEAR(main.samples.at(3 * 32 * 8), 255, 3);       // red on top
    EXPECT_NEAR(main.samples.at(3 * 32 * 56 + 1), 255, 3);  // and green below
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

TEST_F(Heif, RefusesWhatIsNotRightInSilence) {
    for (const Format& format : kFormats) {
        format.save(path_, imageWords(64, 64, 3, VORN_CS_RGB), noiseOf(64 * 64 * 3));
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
    }
}

}  // namespace
