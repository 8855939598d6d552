// The messages of a module, and what a host makes of them: the input is what the module sends from
// its start on. The first byte says which kind of module it is and how large its area; then come
// the messages, each behind two bytes with its length, in whose highest bit it says that it takes a
// message of the host before.
#include <vorn/host.h>

#include <algorithm>
#include <cstring>

#include "tests/lies/scripted_module.h"

namespace {

constexpr int32_t kMostPixels = 1 << 16;

constexpr uint32_t kTakesBefore = 0x8000;

std::vector<ScriptStep> scriptOf(std::span<const uint8_t> input) {
    std::vector<ScriptStep> steps;
    while (input.size() > 2) {
        const uint32_t word = input[0] + 256u * input[1];
        const size_t length = std::min<size_t>(word % kTakesBefore, input.size() - 2);
        const auto message = input.subspan(2, length);
        if (word & kTakesBefore) steps.push_back({true});
        if (length > 0) steps.push_back({false, Bytes(message.begin(), message.end())});
        input = input.subspan(2 + length);
    }
    steps.push_back({true});  // the end
    return steps;
}

int32_t number(VORN_Image* image, uint32_t id) {
    int32_t value = 0;
    VORN_H_ImageVaGetTags(image, id, VORN_Word(&value), TAG_End);
    return value;
}

void askForEverything(VORN_Image* image) {
    for (const uint32_t id : {ITAG_Description, ITAG_DataFormat, ITAG_Palette, MTAG_ModuleList}) {
        void* copy = nullptr;
        VORN_L_ImageVaModuleGetTags(image, id, VORN_Word(&copy), TAG_End);
        FreeMemory(copy);
    }
}

// Reads or writes a picture of the size that the module has told, as far as that is small.
void transfer(VORN_Image* image, bool loader, int32_t channels) {
    int32_t width = number(image, ITAG_Width);
    int32_t height = number(image, ITAG_Height);
    if (width < 1 || height < 1 || int64_t{width} * height > kMostPixels) width = height = 7;
    std::vector<uint8_t> pixels(static_cast<size_t>(width * height * channels));
    VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, {}};
    buffer.chunky.layout = DF_LineInterleaved8;
    buffer.chunky.width = width;
    buffer.chunky.height = height;
    buffer.chunky.channels = channels;
    buffer.chunky.channelPlace[0] = pixels.data();
    VORN_L_ChunkyBufferMacroSetup(&buffer.chunky);
    if (loader) {
        VORN_H_ImageVaReadData(image, &buffer, TAG_End);
        return;
    }
    VORN_H_ImageVaSetTags(image, ITAG_Width, VORN_Word(width), ITAG_Height, VORN_Word(height),
                          ITAG_Channels, VORN_Word(channels), TAG_End);
    VORN_H_ImageVaWriteData(image, &buffer, TAG_End);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const bool loader = data[0] & 1;
    const uint32_t areaSize = 8 + 32u * (data[0] >> 4) * (data[0] >> 4);
    ScriptedModule module(loader ? VORN_LOADER : VORN_SAVER, scriptOf({data + 1, size - 1}),
                          areaSize, data[0] & 2);
    VORN_Image* image = module.image();
    VORN_L_WaitForAck(image);
    if (data[0] & 4)
        VORN_H_ImageVaSetTags(image, ITAG_ColorSpace, VORN_Word(data[0] & 7), ITAG_Orientation,
                              VORN_Word(data[0] & 3), TAG_End);
    if (VORN_H_ImageVaOpen(image, ITAG_Filename, "file", TAG_End)) {
        askForEverything(image);
        if (data[0] & 8) FreeMemory(VORN_H_ModuleVaSendCommand(image, CMD_Module, TAG_End));
        transfer(image, loader, 1 + (data[0] & 3));
    }
    VORN_H_ImageClose(image);
    VORN_L_ImageCloseHandle(image);
    return 0;
}
