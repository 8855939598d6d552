#include "tests/lies/streams.h"

#include <vorn/library.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "tests/modules/explicit_steps.h"

namespace {

using Items = std::vector<StreamItem>;

constexpr uint32_t kHead = 8;

StreamItem item(uint32_t id, Bytes data) {
    data.resize((data.size() + 3) / 4 * 4);
    return {id, static_cast<uint32_t>(kHead + data.size()), std::move(data)};
}

template <class Value>
Bytes bytesOf(const Value& value) {
    const auto* first = reinterpret_cast<const uint8_t*>(&value);
    return {first, first + sizeof value};
}

StreamItem number(uint32_t id, int32_t value) { return item(id, bytesOf(value)); }

StreamItem text(uint32_t id, const std::string& value) {
    return item(id, Bytes(value.c_str(), value.c_str() + value.size() + 1));
}

Bytes noise(Random& random, size_t size) {
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

Items ended(Items items) {
    items.push_back({TAG_End, kHead, {}});
    return items;
}

Items acknowledgement() { return ended({number(MTAG_Ack, 1), number(MTAG_Version, 3)}); }

StreamItem palette(Random& random) {
    constexpr int32_t kLayouts[] = {DF_LineInterleaved8, DF_Chunky3x8, DF_LineInterleaved16,
                                    DF_Chunky3x16};
    const int32_t layout = oneOf(random, kLayouts);
    const auto width = static_cast<int32_t>(pick(random, 1, 20));
    VORN_DataFormat format{layout, width, 1, 3, 0, 0, {}, {}, {}, {}};
    VORN_L_DataFormatMacroSetup(&format);
    Bytes data = bytesOf(uint32_t{VORN_CS_RGB});
    for (const Bytes& part :
         {bytesOf(format), noise(random, static_cast<size_t>(format.lineStep[0]))})
        data.insert(data.end(), part.begin(), part.end());
    return item(ITAG_Palette, data);
}

VORN_DataFormat anyFormat(Random& random) {
    VORN_DataFormat format{};
    format.layout = static_cast<int32_t>(pick(random, DF_Explicit, DF_Chunky3x16));
    format.width = static_cast<int32_t>(pick(random, 1, 24));
    format.height = static_cast<int32_t>(pick(random, 1, 20));
    const bool cells3 = format.layout == DF_Chunky3x8 || format.layout == DF_Chunky3x16;
    const bool cells4 = format.layout == DF_Chunky4x8 || format.layout == DF_Chunky4x16;
    format.channels = static_cast<int32_t>(cells3 ? 3 : cells4 ? 4 : pick(random, 1, 4));
    format.bytesPerChannel =
        static_cast<int32_t>(format.layout ? (format.layout < 4 ? 1 : 2) : pick(random, 1, 2));
    return format;
}

// Fills in the steps for blocks of so many lines. The result is a block's bytes.
int32_t layOut(Random& random, VORN_DataFormat& format, int32_t lines) {
    if (format.layout == DF_Explicit) {
        return setExplicitSteps(format, oneOf(random, kExplicitForms), lines);
    }
    VORN_L_DataFormatMacroSetup(&format);
    return format.lineStep[0] * lines;
}

Items imageInfo(Random& random, const StreamPicture& picture) {
    Items items = {item(ITAG_DataFormat, bytesOf(picture.format)),
                   number(ITAG_ColorSpace, picture.colorSpace)};
    if (picture.colorSpace == VORN_CS_CMAPPED || chance(random, 8))
        items.push_back(palette(random));
    if (chance(random, 4))
        items.push_back(number(ITAG_Orientation, static_cast<int32_t>(pick(random, 0, 7))));
    if (chance(random, 4)) items.push_back(text(ITAG_Description, "a picture"));
    if (chance(random, 4)) items.push_back(item(ITAG_Aspect, bytesOf(1.5)));
    if (chance(random, 8)) {
        const std::string list("\2\0\0\0one\0two", 12);
        items.push_back(item(MTAG_ModuleList, Bytes(list.begin(), list.end())));
    }
    return ended(items);
}

void addBlocks(Random& random, Stream& stream, int32_t lines, int32_t bytes) {
    const VORN_DataFormat& format = stream.picture.format;
    for (int32_t first = 0; first < format.height; first += lines) {
        stream.steps.push_back(
            {false, ended({number(ITAG_ReadWidth, format.width),
                           number(ITAG_ReadHeight, std::min(lines, format.height - first)),
                           number(ITAG_ReadLineNo, first),
                           item(ITAG_Data, noise(random, static_cast<size_t>(bytes)))})});
    }
}

void addLoader(Random& random, Stream& stream) {
    StreamPicture& picture = stream.picture;
    auto& steps = stream.steps;
    picture.colorSpace = static_cast<int32_t>(
        chance(random, 4) ? pick(random, 0, 7) : (picture.format.channels < 3 ? 1 : 2));
    stream.hasCommand = chance(random, 4);
    const auto lines = static_cast<int32_t>(pick(random, 1, std::min(picture.format.height, 16)));
    const int32_t bytes = layOut(random, picture.format, lines);
    for (int round = 0; round < stream.rounds; ++round) {
        steps.push_back({true});
        steps.push_back({false, imageInfo(random, picture)});
        steps.push_back({false, acknowledgement()});
        if (stream.hasCommand) {
            steps.push_back({true});
            steps.push_back({false, ended({number(ITAG_PageNumber, 3), text(ITAG_PageName, "p")})});
            steps.push_back({false, acknowledgement()});
        }
        steps.push_back({true});
        steps.push_back({false, ended({})});
        addBlocks(random, stream, lines, bytes);
        steps.push_back({false, acknowledgement()});
        steps.push_back({true});
        steps.push_back({false, acknowledgement()});
    }
}

void addSaver(Random& random, Stream& stream) {
    StreamPicture& picture = stream.picture;
    auto& steps = stream.steps;
    picture.format.layout =
        picture.format.bytesPerChannel == 1 ? DF_LineInterleaved8 : DF_LineInterleaved16;
    picture.meterTicks = static_cast<int32_t>(chance(random, 2) ? pick(random, 1, 4) : 0);
    const int32_t height = picture.format.height;
    const int32_t lines =
        picture.meterTicks ? std::max(height / (2 * picture.meterTicks), 1) : height;
    picture.blocks = (height + lines - 1) / lines;
    for (int round = 0; round < stream.rounds; ++round) {
        steps.push_back({true});
        Items info = {number(ITAG_Orientation, 0), text(ITAG_Software, "saver")};
        info.resize(static_cast<size_t>(pick(random, 0, 2)));
        steps.push_back({false, ended(info)});
        steps.push_back({false, acknowledgement()});
        steps.push_back({true});
        steps.push_back({false, ended({})});
        for (int32_t block = 0; block <= picture.blocks; ++block)  // and the end of the data
            steps.push_back({true});
        steps.push_back({false, acknowledgement()});
        steps.push_back({true});
        steps.push_back({false, acknowledgement()});
    }
}

}  // namespace

int64_t pick(Random& random, int64_t low, int64_t high) {
    return std::uniform_int_distribution<int64_t>(low, high)(random);
}

Stream goodStream(Random& random) {
    Stream stream;
    stream.type = chance(random, 3) ? VORN_SAVER : VORN_LOADER;
    stream.rounds = chance(random, 3) ? 2 : 1;
    stream.picture.format = anyFormat(random);
    stream.steps.push_back({false, acknowledgement()});
    stream.type == VORN_SAVER ? addSaver(random, stream) : addLoader(random, stream);
    stream.steps.push_back({true});  // the end
    return stream;
}

std::vector<ScriptStep> scriptOf(const Stream& stream) {
    std::vector<ScriptStep> script;
    for (const StreamStep& step : stream.steps) {
        Bytes message;
        for (const StreamItem& part : step.items) {
            const Bytes head = bytesOf(VORN_TagItem{part.id, part.length});
            message.insert(message.end(), head.begin(), head.end());
            message.insert(message.end(), part.data.begin(), part.data.end());
        }
        script.push_back({step.takes, std::move(message)});
    }
    return script;
}

uint32_t longestMessage(const std::vector<ScriptStep>& script) {
    size_t longest = kHead;
    for (const ScriptStep& step : script) longest = std::max(longest, step.message.size());
    return static_cast<uint32_t>(longest);
}
