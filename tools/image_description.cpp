#include "tools/image_description.h"

#include <vorn/library.h>

#include <cstring>

#include "tools/failure.h"
#include "tools/handle.h"

namespace vorn::tool {

namespace {

constexpr uint32_t kItemHead = sizeof(VORN_TagItem);
constexpr uint32_t kPaletteHead = sizeof(int32_t) + sizeof(VORN_DataFormat);

// Loaders may leave the colour space out where the number of channels says it.
int32_t usualColorSpace(int32_t colorChannels) {
    if (colorChannels == 1) {
        return VORN_CS_GRAY;
    }
    return colorChannels == 3 ? VORN_CS_RGB : VORN_CS_NONE;
}

int32_t significantBits(VORN_Image* image, int32_t bytesPerChannel) {
    const VORN_TagItem* const item = moduleItem(image, VORN_ID_BITS_PER_CHANNEL);
    uint8_t bits = 0;
    if (item != nullptr && item->length > kItemHead) {
        std::memcpy(&bits, item + 1, 1);
    }
    return bits == 0 ? 8 * bytesPerChannel : bits;
}

bool isGrey(const PaletteView& palette) {
    const VORN_DataFormat& format = palette.format;
    const int64_t size = int64_t{palette.byteCount} - kPaletteHead;
    const auto sample = [&](int32_t channel, int32_t entry) {
        const int64_t place =
            format.channelPlace[channel] + int64_t{entry} * format.pixelStep[channel];
        uint16_t value = 0;
        if (place >= 0 && place + format.bytesPerChannel <= size) {
            std::memcpy(&value, palette.bytes + kPaletteHead + place,
                        static_cast<size_t>(format.bytesPerChannel));
        }
        return value;
    };
    for (int32_t i = 0; format.channels == 3 && i < format.width; ++i) {
        if (sample(0, i) != sample(1, i) || sample(0, i) != sample(2, i)) {
            return false;
        }
    }
    return palette.colorSpace == VORN_CS_GRAY ||
           (palette.colorSpace == VORN_CS_RGB && format.channels == 3);
}

}  // namespace

ImageDescription describe(VORN_Image* image, const std::string& file, const std::string& loader) {
    ImageDescription description;
    const auto width = longTag(image, ITAG_Width);
    const auto height = longTag(image, ITAG_Height);
    if (!width || !height) {
        throw libraryFailure(file, image);
    }
    description.width = *width;
    description.height = *height;
    description.channels = longTag(image, ITAG_Channels).value_or(0);
    description.alpha = longTag(image, ITAG_Alpha).value_or(0) != 0;
    description.bytesPerChannel = longTag(image, ITAG_ImageChannelSize).value_or(1);
    description.bitsPerChannel = significantBits(image, description.bytesPerChannel);
    const int32_t colorChannels = description.channels - (description.alpha ? 1 : 0);
    // What the module said, not what the host may have asked for.
    int32_t colorSpace = usualColorSpace(colorChannels);
    const unsigned id = ITAG_ColorSpace;
    VORN_L_ImageVaModuleGetTags(image, id, &colorSpace, TAG_End);
    description.colorSpace = colorSpace;
    description.orientation = longTag(image, ITAG_Orientation);
    PaletteView palette;
    if (findPalette(image, palette)) {
        description.paletteEntries = palette.format.width;
        description.greyPalette = isGrey(palette);
    }
    description.pages = longTag(image, ITAG_PageCount).value_or(1);
    description.fields = fieldsOf(image);
    description.loader = loader;
    return description;
}

bool findPalette(VORN_Image* image, PaletteView& palette) {
    const VORN_TagItem* const item = moduleItem(image, ITAG_Palette);
    if (item == nullptr || item->length < kItemHead + kPaletteHead) {
        return false;
    }
    palette.bytes = reinterpret_cast<const uint8_t*>(item + 1);
    palette.byteCount = item->length - kItemHead;
    std::memcpy(&palette.colorSpace, palette.bytes, sizeof palette.colorSpace);
    std::memcpy(&palette.format, palette.bytes + sizeof palette.colorSpace, sizeof palette.format);
    if (!VORN_L_CheckDataFormat(&palette.format)) {
        return false;
    }
    const int64_t entryBytes =
        int64_t{palette.format.width} * palette.format.channels * palette.format.bytesPerChannel;
    return entryBytes <= int64_t{palette.byteCount} - kPaletteHead;
}

}  // namespace vorn::tool
