#include <jxl/encode.h>

#include "formats/jxl/jxl_loader.h"
#include "formats/jxl/jxl_saver.h"
#include "formats/pnm/pnm_saver.h"
#include "tests/formats/reference_tools.h"

namespace {

using jxl_format::JxlLoader;
using jxl_format::JxlSaver;

using Jxl = FormatTest;

TEST_F(Jxl, KeepsEveryPixelWithoutLossAndTextsAndOrientation) {
    settings_.store("jxl", "Lossless=true");
    for (const VORN_Word channels : {1, 2, 3, 4}) {
        for (const VORN_Word bytes : {1, 2}) {
            SCOPED_TRACE(channels * 10 + bytes);
            auto words =
                imageWords(31, 17, channels, channels < 3 ? VORN_CS_GRAY : VORN_CS_RGB, bytes,
                           {ITAG_Artist, word("Andr\xC3\xA9"), ITAG_XDPI, 300, ITAG_YDPI, 72});
            const std::string path = files_.path("a.jxl");
            const LoadedImage plain = throughFile<JxlSaver, JxlLoader>(path, words);
            if (channels % 2 == 1 && hasTool("djxl")) {
                run("djxl " + path + ' ' + files_.path("a.ppm"));
                EXPECT_EQ(pnmSamples(files_.path("a.ppm")), plain.samples);
            }
            words.insert(words.end(), {ITAG_Orientation, 5});
            const LoadedImage back = throughFile<JxlSaver, JxlLoader>(path, words);
            EXPECT_EQ(textOf(back.image, ITAG_Artist), "Andr\xC3\xA9");
            EXPECT_EQ(tagsOf(back.image)[ITAG_XDPI], 300u);
            EXPECT_EQ(back.image.orientation, 5);
        }
    }
}

TEST_F(Jxl, StoresWhatIsSetAndAResolutionAlone) {
    const auto sizeWith = [&](const char* set) {
        settings_.store("jxl", set);
        save<JxlSaver>(files_.path("a"), imageWords(64, 64, 3, VORN_CS_RGB, 1, {ITAG_XDPI, 96}),
                       noiseOf(64 * 64 * 3));
        EXPECT_EQ(tagsOf(load<JxlLoader>(files_.path("a")).image)[ITAG_YDPI], 96u);
        return contentOf(files_.path("a")).size();
    };
    EXPECT_LT(sizeWith("Quality=10"), sizeWith("Quality=80"));
    EXPECT_LT(sizeWith("Quality=80"), sizeWith(""));
    EXPECT_LT(sizeWith(""), sizeWith("Lossless=true"));
    EXPECT_NE(sizeWith("Effort=1"), sizeWith("Effort=3"));
    for (const char* bad : {"Quality=101", "Effort=0"})
        EXPECT_EQ(failureOf([&] { sizeWith(bad); }), formats::kBadOption) << bad;
}

// What the saver doesn't write: pictures in one line, each of the samples given.
struct Encoded {
    uint32_t bits = 8;
    uint32_t exponent = 0;
    bool black = false;
    std::vector<std::vector<float>> frames;

    std::string file() const {
        const std::unique_ptr<JxlEncoder, void (*)(JxlEncoder*)> owner(JxlEncoderCreate(nullptr),
                                                                       JxlEncoderDestroy);
        JxlEncoder* encoder = owner.get();
        JxlBasicInfo info;
        JxlEncoderInitBasicInfo(&info);
        info.xsize = static_cast<uint32_t>(frames[0].size());
        info.ysize = info.num_color_channels = 1;
        info.bits_per_sample = bits;
        info.exponent_bits_per_sample = exponent;
        info.num_extra_channels = black;
        info.uses_original_profile = JXL_TRUE;
        info.have_animation = frames.size() > 1;
        info.animation = {10, 1, 0, JXL_FALSE};
        JxlEncoderSetCodestreamLevel(encoder, 10);
        JxlEncoderSetBasicInfo(encoder, &info);
        JxlColorEncoding colors{};
        JxlColorEncodingSetToSRGB(&colors, JXL_TRUE);
        JxlEncoderSetColorEncoding(encoder, &colors);
        JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
        JxlEncoderSetFrameLossless(settings, JXL_TRUE);
        JxlFrameHeader header;
        JxlEncoderInitFrameHeader(&header);
        header.duration = info.have_animation ? 1 : 0;
        JxlEncoderSetFrameHeader(settings, &header);
        const JxlPixelFormat format{1, JXL_TYPE_FLOAT, JXL_LITTLE_ENDIAN, 0};
        if (black) {
            JxlExtraChannelInfo extra;
            JxlEncoderInitExtraChannelInfo(JXL_CHANNEL_BLACK, &extra);
            JxlEncoderSetExtraChannelInfo(encoder, 0, &extra);
        }
        for (const auto& frame : frames) {
            const size_t size = frame.size() * sizeof(float);
            EXPECT_EQ(JxlEncoderAddImageFrame(settings, &format, frame.data(), size), 0);
            if (black) JxlEncoderSetExtraChannelBuffer(settings, &format, frame.data(), size, 0);
        }
        JxlEncoderCloseInput(encoder);
        std::string bytes(1 << 20, '\0');
        auto* next = reinterpret_cast<uint8_t*>(bytes.data());
        size_t room = bytes.size();
        EXPECT_EQ(JxlEncoderProcessOutput(encoder, &next, &room), JXL_ENC_SUCCESS);
        return bytes.substr(0, bytes.size() - room);
    }
};

TEST_F(Jxl, OpensTheWantedFrame) {
    const std::string path =
        files_.write("a", Encoded{.frames = {{0, 1, 0}, {1, 0, 1}, {1, 1, 0}}}.file());
    const LoadedImage second = load<JxlLoader>(path, {.page = 2});
    EXPECT_EQ(second.samples, (Bytes{255, 0, 255}));
    EXPECT_EQ(tagsOf(second.image)[ITAG_PageCount], 3u);
    EXPECT_EQ(failureOf([&] { load<JxlLoader>(path, {.page = 4}); }), formats::kNoSuchPage);
}

TEST_F(Jxl, ScalesEverySampleOfOtherDepthsExactly) {
    for (const uint32_t bits : {1u, 5u, 9u, 12u, 15u}) {
        const uint32_t most = (1u << bits) - 1;
        const uint32_t full = bits > 8 ? 65535 : 255;
        Encoded file{.bits = bits, .frames = {{}}};
        Bytes wanted;
        for (uint32_t i = 0; i <= most; ++i) {
            file.frames[0].push_back(static_cast<float>(i) / static_cast<float>(most));
            const uint32_t sample = (i * full + most / 2) / most;
            wanted.push_back(static_cast<uint8_t>(sample));
            if (bits > 8) wanted.push_back(static_cast<uint8_t>(sample >> 8));
        }
        const LoadedImage loaded = load<JxlLoader>(files_.write("a", file.file()));
        EXPECT_EQ(loaded.image.significantBits, static_cast<int32_t>(bits));
        EXPECT_TRUE(loaded.samples == wanted) << bits;
    }
}

// A codestream's head: the size, and otherwise what is usual.
std::string headOf(uint64_t width, uint64_t height) {
    const uint64_t size = 3u << 1 | (height - 1) << 3;                // 33 bits, then no ratio
    const uint64_t rest = 3u | (width - 1) << 2 | uint64_t{3} << 32;  // behind 36 bits
    std::string bytes = "\xFF\x0A";
    for (int i = 0; i < 16; ++i) {
        const int bit = 8 * i;
        uint64_t value = bit < 64 ? size >> bit : 0;
        value |= bit >= 36 ? (bit - 36 < 64 ? rest >> (bit - 36) : 0) : rest << (36 - bit);
        bytes += static_cast<char>(value);
    }
    return bytes;
}

TEST_F(Jxl, RefusesWhatIsNotRight) {
    for (const char* other : {"", "\xFF", "\xFF\x0B", "JXL picture"})
        EXPECT_EQ(loadFailure<JxlLoader>(files_.write("a", other)), formats::kNotThisFormat);
    const std::pair<std::string, int32_t> cases[] = {
        {headOf(65536, 65536), formats::kOutOfMemory},
        {headOf(70000, 1), formats::kUnsupported},
        {Encoded{.black = true, .frames = {{0, 1}}}.file(), formats::kUnsupported},
        {Encoded{.bits = 32, .exponent = 8, .frames = {{0, 1}}}.file(), formats::kUnsupported}};
    for (const auto& [file, error] : cases)
        EXPECT_EQ(loadFailure<JxlLoader>(files_.write("a", file)), error) << error;
    EXPECT_EQ(saveFailure<JxlSaver>(files_.path("b"), imageWords(1, 1, 4, VORN_CS_CMYK)),
              formats::kCannotSave);
}

TEST_F(Jxl, DecodesOtherEncodersFilesAsTheReferenceDoes) {
    if (!hasTool("cjxl") || !hasTool("djxl")) GTEST_SKIP() << "libjxl-tools are not installed";
    save<pnm::PnmSaver>(files_.path("a.ppm"), imageWords(300, 70, 3, VORN_CS_RGB),
                        noiseOf(300 * 70 * 3));
    for (const char* options :
         {"-d 0 -e 3", "-d 1 -e 4", "-d 3 -p -e 5", "-d 1 --modular=1 -e 3"}) {
        run("cjxl " + files_.path("a.ppm") + ' ' + files_.path("a.jxl") + ' ' + options);
        run("djxl " + files_.path("a.jxl") + ' ' + files_.path("b.ppm"));
        EXPECT_TRUE(load<JxlLoader>(files_.path("a.jxl")).samples ==
                    pnmSamples(files_.path("b.ppm")))
            << options;
    }
}

}  // namespace
