#include "formats/common/image_to_save.h"

#include <vorn/library.h>
#include <vorn/module.h>

#include <cstring>
#include <memory>

#include "formats/common/failure.h"
#include "formats/common/files.h"
#include "formats/common/layout.h"

namespace formats {
namespace {

// A host that names no colour space means grey or RGB, by the number of channels.
int32_t colorSpaceFor(int32_t channels) {
    if (channels == 1 || channels == 2) return VORN_CS_GRAY;
    return channels == 3 || channels == 4 ? VORN_CS_RGB : VORN_CS_NONE;
}

void setChannels(ImageToSave& image) {
    const int32_t named = image.number(ITAG_ColorSpace).value_or(VORN_CS_NONE);
    const int32_t standard = VORN_L_ColorSpaceChannels(named);
    image.channels = image.number(ITAG_Channels).value_or(standard != 0 ? standard : 3);
    image.colorSpace = named == VORN_CS_NONE ? colorSpaceFor(image.channels) : named;
    const int32_t colors = VORN_L_ColorSpaceChannels(image.colorSpace);  // 0: any number
    image.alpha = colors != 0 && image.channels == colors + 1;
    if (image.channels < 1 || image.channels > VORN_MAX_CHANNELS) throw Failure{kCannotSave};
    if (colors != 0 && image.channels != colors && !image.alpha) throw Failure{kCannotSave};
}

int32_t size(const ImageToSave& image, uint32_t id) {
    const auto value = image.number(id);
    if (!value) throw Failure{kNoSize};
    if (*value < 1 || *value > VORN_MAX_SIZE) throw Failure{kSizeOutOfRange};
    return *value;
}

// The data of a palette item begins with its colour space and the format of its entries.
VORN_DataFormat paletteFormat(const VORN_TagItem* item) {
    VORN_DataFormat format{};
    const size_t dataBytes = item->length - sizeof(VORN_TagItem);
    if (dataBytes >= sizeof(uint32_t) + sizeof format)
        std::memcpy(&format, reinterpret_cast<const uint8_t*>(item + 1) + sizeof(uint32_t),
                    sizeof format);
    return format;
}

}  // namespace

std::optional<int32_t> ImageToSave::number(uint32_t id) const {
    const VORN_TagItem* item = VORN_L_TagFind(message, id);
    if (!item) return std::nullopt;
    return VORN_L_TagGetLongVal(item);
}

std::string ImageToSave::text(uint32_t id) const {
    const VORN_TagItem* item = VORN_L_TagFind(message, id);
    if (!item) return {};
    const std::unique_ptr<char, void (*)(char*)> copy(VORN_L_TagGetString(item),
                                                      VORN_L_TagFreeString);
    if (!copy) throw Failure{kOutOfMemory};
    return copy.get();
}

std::vector<uint8_t> ImageToSave::palette() const {
    const VORN_TagItem* item = VORN_L_TagFind(message, ITAG_Palette);
    if (!item) return {};
    const VORN_DataFormat format = paletteFormat(item);
    if (!VORN_L_CheckDataFormat(&format)) return {};
    const int32_t bytes = format.bytesPerChannel;
    std::vector<uint8_t> entries(static_cast<size_t>(format.width * format.channels * bytes));
    VORN_ChunkyBuffer line =
        interleavedBuffer(entries.data(), format.width, 1, format.channels, bytes);
    const bool grey = format.channels < 3;
    if (!VORN_M_GetPalette(message, &line, grey ? VORN_CS_GRAY : VORN_CS_RGB)) return {};

    std::vector<uint8_t> rgb;
    for (int32_t entry = 0; entry < line.width; ++entry) {
        for (int32_t c = 0; c < 3; ++c) {
            const int32_t sample = entry * format.channels + (grey ? 0 : c);
            rgb.push_back(entries[static_cast<size_t>(sample * bytes + bytes - 1)]);
        }
    }
    return rgb;
}

ImageToSave imageToSave(const VORN_TagItem* message) {
    ImageToSave image;
    image.message = message;
    image.fileName = fileName(message);
    image.width = size(image, ITAG_Width);
    image.height = size(image, ITAG_Height);
    image.bytesPerChannel = image.number(ITAG_ImageChannelSize).value_or(1) == 2 ? 2 : 1;
    setChannels(image);
    return image;
}

}  // namespace formats
