#include "tools/conversion_plan.h"

#include <vorn/library.h>

#include <array>

namespace vorn::tool {

namespace {

bool canBecome(int32_t source, int32_t target) {
    if (source == target) {
        return true;
    }
    const bool made = target == VORN_CS_GRAY || target == VORN_CS_RGB || target == VORN_CS_YUV601;
    uint32_t code = 0;
    VORN_L_SetColorSpaceCorrection(&code, source, target);
    return made && code != 0;
}

// An index is a name, not a brightness: it can't be given another sample size.
bool keepsIndices(const ImageDescription& image,
                  const Capabilities& saver,
                  const ConversionWishes& wishes) {
    const int32_t bits = 8 * image.bytesPerChannel;
    const bool sameDepth = wishes.depth.value_or(bits) == bits && saver.handlesDepth(bits);
    return image.paletteEntries.has_value() && sameDepth;
}

std::optional<int32_t> wishedColorSpace(const ImageDescription& image,
                                        const Capabilities& saver,
                                        const ConversionWishes& wishes,
                                        std::string& reason) {
    const int32_t target = *wishes.colorSpace;
    const std::string name = colorSpaceName(target);
    if (!saver.handlesColorSpace(target)) {
        reason = "The saver " + saver.name + " doesn't write " + name;
        return std::nullopt;
    }
    const bool blocked = target == VORN_CS_CMAPPED && !keepsIndices(image, saver, wishes);
    if (!canBecome(image.colorSpace, target) || blocked) {
        reason = std::string("The picture's ") + colorSpaceName(image.colorSpace) +
                 " can't be turned into " + name;
        return std::nullopt;
    }
    return target;
}

std::optional<int32_t> bestColorSpace(const ImageDescription& image,
                                      const Capabilities& saver,
                                      const ConversionWishes& wishes,
                                      std::string& reason) {
    constexpr std::array kBySuperiority = {VORN_CS_RGB, VORN_CS_YUV601, VORN_CS_GRAY};
    const bool indexed = image.colorSpace == VORN_CS_CMAPPED;
    if (saver.handlesColorSpace(image.colorSpace) &&
        (!indexed || (keepsIndices(image, saver, wishes) && !wishes.mixesColors))) {
        return image.colorSpace;
    }
    if (indexed && image.greyPalette && saver.handlesColorSpace(VORN_CS_GRAY)) {
        return VORN_CS_GRAY;
    }
    for (const int32_t target : kBySuperiority) {
        if (saver.handlesColorSpace(target) && canBecome(image.colorSpace, target)) {
            return target;
        }
    }
    reason = "The saver " + saver.name + " can't write what is " + colorSpaceName(image.colorSpace);
    return std::nullopt;
}

std::optional<int32_t> chooseBytes(const ImageDescription& image,
                                   const Capabilities& saver,
                                   const ConversionWishes& wishes,
                                   std::string& reason) {
    const int32_t own = 8 * image.bytesPerChannel;
    const int32_t other = own == 8 ? 16 : 8;
    const int32_t wanted = wishes.depth.value_or(own);
    if (saver.handlesDepth(wanted)) {
        return wanted / 8;
    }
    if (!wishes.depth && saver.handlesDepth(other)) {
        return other / 8;
    }
    reason = "The saver " + saver.name + " doesn't write " + std::to_string(wanted) +
             " bits per channel";
    return std::nullopt;
}

int32_t colorChannelsOf(int32_t colorSpace, const ImageDescription& image) {
    const int32_t channels = VORN_L_ColorSpaceChannels(colorSpace);
    return channels != 0 ? channels : image.channels - (image.alpha ? 1 : 0);
}

}  // namespace

std::optional<ConversionPlan> planConversion(const ImageDescription& image,
                                             const Capabilities& saver,
                                             const ConversionWishes& wishes,
                                             std::string& reason) {
    const auto colorSpace = wishes.colorSpace ? wishedColorSpace(image, saver, wishes, reason)
                                              : bestColorSpace(image, saver, wishes, reason);
    const auto bytes = chooseBytes(image, saver, wishes, reason);
    if (!colorSpace || !bytes) {
        return std::nullopt;
    }
    ConversionPlan plan;
    plan.colorSpace = *colorSpace;
    plan.bytesPerChannel = *bytes;
    plan.colorChannels = colorChannelsOf(*colorSpace, image);
    plan.readAlpha = image.alpha && (saver.alpha || saver.alphaAlways);
    plan.addAlpha = !image.alpha && saver.alphaAlways;
    plan.palette = *colorSpace == VORN_CS_CMAPPED;
    plan.lookUp = image.colorSpace == VORN_CS_CMAPPED && !plan.palette;
    if (plan.channels() < 1 || plan.channels() > VORN_MAX_CHANNELS) {
        reason = "The saver " + saver.name + " can't take " + std::to_string(plan.channels()) +
                 " channels";
        return std::nullopt;
    }
    return plan;
}

}  // namespace vorn::tool
