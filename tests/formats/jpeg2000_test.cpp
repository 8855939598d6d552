#include <openjpeg.h>

#include "formats/jpeg2000/jpeg2000_loader.h"
#include "formats/jpeg2000/jpeg2000_saver.h"
#include "tests/formats/format_files.h"

namespace {

using jpeg2000::Jpeg2000Loader;
using jpeg2000::Jpeg2000Saver;

using Jpeg2000 = FormatTest;

TEST_F(Jpeg2000, KeepsTextsInJp2OnlyAndReadsTheOrientationOfOthers) {
    for (const char* name : {"a.j2c", "a.J2K", "a.jp2"}) {
        throughFile<Jpeg2000Saver, Jpeg2000Loader>(
            files_.path(name),
            imageWords(3, 2, 3, VORN_CS_RGB, 1, {ITAG_Artist, word("me"), ITAG_Orientation, 5}));
        const formats::Description image = load<Jpeg2000Loader>(files_.path(name)).image;
        EXPECT_EQ(textOf(image, ITAG_Artist), name[3] == 'p' ? "me" : "(none)");
        EXPECT_EQ(image.orientation, 0);  // the host has turned it
    }
    // 6 of EXIF.
    const std::string box(
        "\0\0\0\x32uuidJpgTiffExif->JP2II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 50);
    const std::string turned = files_.write("b", files_.read("a.jp2") + box);
    EXPECT_EQ(load<Jpeg2000Loader>(turned).image.orientation, 3);
}

// The numbers of colour spaces in JP2 files.
enum : char { kUnnamed = 0, kInks = 12, kLab = 14, kGrey = 17, kYcc = 18, kExtendedYcc = 24 };

// What the saver doesn't write: components of one value each.
struct Component {
    uint32_t bits = 8;
    int32_t value = 0;
    uint32_t step = 1;
    bool sign = false;
};

void encode(const std::string& path,
            char colors,
            const std::vector<Component>& all,
            uint32_t width = 41,
            uint32_t height = 33) {
    std::vector<opj_image_cmptparm_t> parameters;
    for (const Component& c : all) {
        opj_image_cmptparm_t each{};
        each.dx = each.dy = c.step;
        each.w = (width + c.step - 1) / c.step;
        each.h = (height + c.step - 1) / c.step;
        each.prec = c.bits;
        each.sgnd = c.sign;
        parameters.push_back(each);
    }
    const jpeg2000::Image image(opj_image_create(static_cast<OPJ_UINT32>(all.size()),
                                                 parameters.data(), OPJ_CLRSPC_UNSPECIFIED));
    image->x1 = width;
    image->y1 = height;
    for (size_t c = 0; c < all.size(); ++c)
        std::fill_n(image->comps[c].data, image->comps[c].w * image->comps[c].h, all[c].value);
    opj_cparameters_t options;
    opj_set_default_encoder_parameters(&options);
    options.tcp_numlayers = options.cp_disto_alloc = 1;
    const jpeg2000::Codec codec(opj_create_compress(OPJ_CODEC_JP2));
    opj_stream_t* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE);
    EXPECT_TRUE(opj_setup_encoder(codec.get(), &options, image.get()) &&
                opj_start_compress(codec.get(), image.get(), stream) &&
                opj_encode(codec.get(), stream) && opj_end_compress(codec.get(), stream));
    opj_stream_destroy(stream);
    std::string file = contentOf(path);
    file[file.find("colr") + 10] = colors;
    std::ofstream(path, std::ios::binary) << file;
}

TEST_F(Jpeg2000, AnnouncesColoursAsTheyAreAndConvertsTheRest) {
    const Component quarter{.value = 64};
    struct Case {
        const char* name;
        char colors;
        std::vector<Component> components;
        int32_t wish, announced;
        Bytes pixel;
    };
    const Case cases[] = {
        {"bits", kGrey, {{5, 7}}, -1, VORN_CS_GRAY, {58}},
        {"more bits", kGrey, {{12, 4094}}, -1, VORN_CS_GRAY, {0xEF, 0xFF}},
        {"most bits", kGrey, {{20, 0x81000}}, -1, VORN_CS_GRAY, {0x00, 0x81}},
        {"signed", kGrey, {{8, -28, 1, true}}, -1, VORN_CS_GRAY, {100}},
        {"alpha", kGrey, {{8, 9}, {1, 1}}, -1, VORN_CS_GRAY, {9, 255}},
        {"YCC", kYcc, {{8, 76}, {8, 85, 2}, {8, 255, 2}}, -1, VORN_CS_RGB, {254, 0, 0}},
        {"unnamed YCC", kUnnamed, {{8, 76}, {8, 85, 2}, {8, 255, 2}}, -1, VORN_CS_RGB, {254, 0, 0}},
        {"inks", kInks, {{8, 255}, quarter, {}, quarter}, -1, VORN_CS_CMYK, {255, 64, 0, 64}},
        {"RGB", kInks, {{8, 255}, quarter, {}, quarter}, VORN_CS_RGB, VORN_CS_RGB, {0, 143, 191}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        encode(files_.path("a"), c.colors, c.components);
        const LoadedImage loaded = load<Jpeg2000Loader>(files_.path("a"), {.colorSpace = c.wish});
        EXPECT_EQ(loaded.image.colorSpace, c.announced);
        EXPECT_EQ(loaded.image.significantBits,
                  static_cast<int32_t>(std::min(c.components[0].bits, 16u)));
        const size_t size = c.pixel.size();
        ASSERT_EQ(loaded.samples.size(), 41 * 33 * size);
        for (size_t at = 0; at < loaded.samples.size(); ++at)
            ASSERT_EQ(loaded.samples[at], c.pixel[at % size]) << at;
    }
    for (const char unknown : {kExtendedYcc, kLab}) {
        encode(files_.path("a"), unknown, {{}, {}, {}});
        EXPECT_EQ(loadFailure<Jpeg2000Loader>(files_.path("a")), formats::kUnsupported);
    }
}

TEST_F(Jpeg2000, DecodesTallPicturesInBandsAndSmallOnesFromTheirLargerSelves) {
    settings_.store("jpeg2000", "TileSize=64");
    Bytes samples = noiseOf(16384 * 200);
    for (uint8_t& sample : samples) sample &= 1;
    throughFile<Jpeg2000Saver, Jpeg2000Loader>(files_.path("a.jp2"),
                                               imageWords(16384, 200, 1, VORN_CS_GRAY), samples);

    encode(files_.path("b"), kGrey, {{8, 77}}, 333, 222);
    for (const auto& [wanted, width, height] :
         {std::tuple{333, 333, 222}, {167, 333, 222}, {166, 167, 111}, {20, 42, 28}}) {
        const LoadedImage less = load<Jpeg2000Loader>(files_.path("b"), {.width = wanted});
        EXPECT_EQ(less.image.width, width);
        EXPECT_EQ(less.image.height, height);
        EXPECT_EQ(less.samples, Bytes(static_cast<size_t>(width * height), 77));
    }
}

TEST_F(Jpeg2000, RefusesWhatIsNotRight) {
    save<Jpeg2000Saver>(files_.path("a.j2k"), imageWords(3, 2, 1, VORN_CS_GRAY), noiseOf(6));
    const std::string huge = big(65536, 4) + big(65536, 4), small = big(2, 4) + big(2, 4);
    const auto with = [&](const std::string& size, const std::string& tile, char components = 1) {
        std::string file = files_.read("a.j2k");
        return file.replace(8, 8, size).replace(24, 8, tile).replace(41, 1, 1, components);
    };
    const std::pair<std::string, int32_t> cases[] = {{with(huge, huge), formats::kOutOfMemory},
                                                     {with(huge, small), formats::kDamaged},
                                                     {with(small, huge, 9), formats::kUnsupported},
                                                     {with(small, huge, 0), formats::kDamaged}};
    for (const auto& [file, error] : cases)
        EXPECT_EQ(loadFailure<Jpeg2000Loader>(files_.write("a", file)), error) << error;
}

}  // namespace
