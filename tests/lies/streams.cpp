#include "tests/lies/streams.h"

#include <algorithm>
#include <string>

#include "tests/modules/explicit_steps.h"

namespace {

Bytes noise(Random& random, int32_t size) {
    Bytes bytes(static_cast<size_t>(size));
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

MessageItems acknowledges() {
    return MessageBytes().number(MTAG_Ack, 1).number(MTAG_Version, 3).items();
}

VORN_DataFormat anyFormat(Random& random) {
    VORN_DataFormat format{};
    format.layout = pick(random, DF_Explicit, DF_Chunky3x16);
    format.width = pick(random, 1, 24);
    format.height = pick(random, 1, 20);
    const bool cells3 = format.layout == DF_Chunky3x8 || format.layout == DF_Chunky3x16;
    const bool cells4 = format.layout == DF_Chunky4x8 || format.layout == DF_Chunky4x16;
    format.channels = cells3 ? 3 : cells4 ? 4 : pick(random, 1, 4);
    format.bytesPerChannel = format.layout ? (format.layout < 4 ? 1 : 2) : pick(random, 1, 2);
    return format;
}

// Fills in the steps for blocks of so many lines. The result is a block's bytes.
int32_t layOut(Random& random, VORN_DataFormat& format, int32_t lines) {
    if (format.layout == DF_Explicit)
        return setExplicitSteps(format, oneOf(random, kExplicitForms), lines);
    VORN_L_DataFormatMacroSetup(&format);
    return format.lineStep[0] * lines;
}

MessageItems imageInfo(Random& random, const VORN_DataFormat& format, int32_t colorSpace) {
    MessageBytes message;
    message.format(format).number(ITAG_ColorSpace, colorSpace);
    if (colorSpace == VORN_CS_CMAPPED || chance(random, 8)) {
        constexpr int32_t kLayouts[] = {DF_LineInterleaved8, DF_Chunky3x8, DF_LineInterleaved16,
                                        DF_Chunky3x16};
        const VORN_DataFormat palette =
            formatOf(oneOf(random, kLayouts), pick(random, 1, 20), 1, 3);
        message.palette(palette, noise(random, palette.lineStep[0]));
    }
    if (chance(random, 4)) message.number(ITAG_Orientation, pick(random, 0, 7));
    if (chance(random, 4)) message.text(ITAG_Description, "a picture");
    if (chance(random, 4)) message.real(ITAG_Aspect, 1.5);
    if (chance(random, 8)) message.data(MTAG_ModuleList, "\2\0\0\0one\0two", 12);
    return message.items();
}

void addLoader(Random& random, Stream& stream) {
    VORN_DataFormat& format = stream.format;
    const int32_t colorSpace = chance(random, 4) ? pick(random, 0, 7) : format.channels < 3 ? 1 : 2;
    stream.hasCommand = chance(random, 4);
    const int32_t lines = pick(random, 1, std::min(format.height, 16));
    const int32_t bytes = layOut(random, format, lines);
    for (int round = 0; round < stream.rounds; ++round) {
        stream.takes().sends(imageInfo(random, format, colorSpace)).sends(acknowledges());
        if (stream.hasCommand)
            stream.takes()
                .sends(MessageBytes().number(ITAG_PageNumber, 3).text(ITAG_PageName, "p").items())
                .sends(acknowledges());
        stream.takes().sends();
        for (int32_t first = 0; first < format.height; first += lines)
            stream.sends(
                MessageBytes()
                    .number(ITAG_ReadWidth, format.width)
                    .number(ITAG_ReadHeight, std::min(lines, format.height - first))
                    .number(ITAG_ReadLineNo, first)
                    .data(ITAG_Data, noise(random, bytes).data(), static_cast<size_t>(bytes))
                    .items());
        stream.sends(acknowledges()).takes().sends(acknowledges());
    }
}

void addSaver(Random& random, Stream& stream) {
    VORN_DataFormat& format = stream.format;
    format.layout = format.bytesPerChannel == 1 ? DF_LineInterleaved8 : DF_LineInterleaved16;
    stream.meterTicks = chance(random, 2) ? pick(random, 1, 4) : 0;
    const int32_t lines =
        stream.meterTicks ? std::max(format.height / (2 * stream.meterTicks), 1) : format.height;
    for (int round = 0; round < stream.rounds; ++round) {
        MessageBytes info;
        if (chance(random, 2)) info.number(ITAG_Orientation, 0);
        if (chance(random, 2)) info.text(ITAG_Software, "saver");
        stream.takes().sends(info.items()).sends(acknowledges()).takes().sends();
        for (int32_t line = 0; line < format.height; line += lines) stream.takes();
        stream.takes().sends(acknowledges());  // the end of the data
        stream.takes().sends(acknowledges());
    }
}

}  // namespace

Stream goodStream(Random& random) {
    Stream stream;
    stream.type = chance(random, 3) ? VORN_SAVER : VORN_LOADER;
    stream.rounds = chance(random, 3) ? 2 : 1;
    stream.format = anyFormat(random);
    stream.sends(acknowledges());
    stream.type == VORN_SAVER ? addSaver(random, stream) : addLoader(random, stream);
    stream.takes();  // the end
    return stream;
}

std::vector<ScriptStep> scriptOf(const Stream& stream) {
    std::vector<ScriptStep> script;
    for (const StreamStep& step : stream.steps) script.push_back({step.takes, bytesOf(step.items)});
    return script;
}

uint32_t longestMessage(const std::vector<ScriptStep>& script) {
    size_t longest = 8;
    for (const ScriptStep& step : script) longest = std::max(longest, step.message.size());
    return static_cast<uint32_t>(longest);
}
