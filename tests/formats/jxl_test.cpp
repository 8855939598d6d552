#include <jxl/encode.h>

#include "formats/jxl/jxl_loader.h"
#include "tests/formats/format_files.h"

namespace {

using jxl_format::JxlLoader;

using Jxl = FormatTest;

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

TEST_F(Jxl, RefusesWhatIsNotRight) {
    const std::string files[] = {
        "\xFF\x0A" + little(0x445BF000000006, 8) + little(0x30, 8),  // 70000 x 1 pixels
        Encoded{.black = true, .frames = {{0, 1}}}.file(),
        Encoded{.bits = 32, .exponent = 8, .frames = {{0, 1}}}.file()};
    for (const std::string& file : files)
        EXPECT_EQ(loadFailure<JxlLoader>(files_.write("a", file)), formats::kUnsupported);
}

}  // namespace
