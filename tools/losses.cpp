#include "tools/losses.h"

#include <algorithm>
#include <vector>

#include "tools/table.h"

namespace vorn::tool {

namespace {

// Grey can be told in red, green and blue, and so can the colours of a palette.
bool losesColors(int32_t from, int32_t to) {
    return from != to && !(to == VORN_CS_RGB && (from == VORN_CS_GRAY || from == VORN_CS_CMAPPED));
}

}  // namespace

std::string lossesOf(const ImageDescription& image,
                     const Capabilities& saver,
                     const ConversionWishes& wishes,
                     const ConversionPlan& plan) {
    std::vector<std::string> losses;
    if (!saver.handlesSize(image.width, image.height)) {
        losses.push_back("the size " + std::to_string(image.width) + "x" +
                         std::to_string(image.height));
    }
    if (image.alpha && !plan.readAlpha) {
        losses.emplace_back("the alpha channel");
    }
    const int32_t bits = std::min(8 * plan.bytesPerChannel, saver.deepest());
    if (!wishes.depth && image.bitsPerChannel > bits) {
        losses.push_back(std::to_string(image.bitsPerChannel) + " bits per channel (" +
                         std::to_string(bits) + " are kept)");
    }
    const bool greys = image.greyPalette && plan.colorSpace == VORN_CS_GRAY;
    if (!wishes.colorSpace && !greys && losesColors(image.colorSpace, plan.colorSpace)) {
        losses.push_back(std::string(colorSpaceName(image.colorSpace)) + " (it becomes " +
                         colorSpaceName(plan.colorSpace) + ")");
    }
    if (!wishes.onePage && image.pages > 1) {
        losses.push_back("more than the first of " + std::to_string(image.pages) + " pages");
    }
    return losses.empty() ? "" : "The saver " + saver.name + " can't hold " + joined(losses, ", ");
}

}  // namespace vorn::tool
