// Paints a picture and saves it through the PNG saver: how a program writes images.

#include <vorn/vorn.h>

#include <cstdio>

#include "scene.h"

namespace {

constexpr int32_t kWidth = 1200;
constexpr int32_t kHeight = 800;

int fail(const char* file, VORN_Image* image) {
    const VORN_ErrorPair error = VORN_H_ImageGetError(image);
    std::fprintf(
        stderr, "landscape: %s: %s\n", file,
        VORN_H_ImageGetErrorString(VORN_ErrorPairCode(error), VORN_ErrorPairSubcode(error)));
    return 1;
}

VORN_ImageBuffer describeMemory(uint8_t* pixels) {
    VORN_ImageBuffer buffer{};
    buffer.type = VORN_BUFFER_CHUNKY;
    buffer.chunky.layout = DF_Chunky3x8;
    buffer.chunky.width = kWidth;
    buffer.chunky.height = kHeight;
    buffer.chunky.channels = 3;
    buffer.chunky.channelPlace[0] = pixels;
    VORN_L_ChunkyBufferMacroSetup(&buffer.chunky);
    return buffer;
}

int save(VORN_Image* image, const char* file, uint8_t* pixels) {
    const VORN_ImageBuffer buffer = describeMemory(pixels);
    const VORN_Word description[] = {ITAG_Width,
                                     kWidth,
                                     ITAG_Height,
                                     kHeight,
                                     ITAG_Channels,
                                     3,
                                     ITAG_ImageChannels,
                                     3,
                                     ITAG_ImageChannelSize,
                                     1,
                                     ITAG_Alpha,
                                     0,
                                     ITAG_ColorSpace,
                                     VORN_CS_RGB,
                                     ITAG_Orientation,
                                     0,
                                     ITAG_XDPI,
                                     150,
                                     ITAG_YDPI,
                                     150,
                                     ITAG_Description,
                                     reinterpret_cast<VORN_Word>("A mountain lake in the evening"),
                                     ITAG_Software,
                                     reinterpret_cast<VORN_Word>("landscape"),
                                     TAG_End};
    if (!VORN_H_ImageVaOpen(image, ITAG_Filename, file, TAG_End) ||
        !VORN_H_ImageSetTags(image, description) ||
        !VORN_H_ImageVaWriteData(image, &buffer, TAG_End)) {
        return fail(file, image);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: landscape FILE.png\n");
        return 2;
    }
    VORN_Image* const image = VORN_H_ModuleVaOpen("png", VORN_SAVER, TAG_End);
    if (image == nullptr) {
        return fail(argv[1], nullptr);
    }
    std::vector<uint8_t> pixels = paintScene(kWidth, kHeight);
    const int result = save(image, argv[1], pixels.data());
    VORN_H_ModuleClose(image);
    return result;
}
