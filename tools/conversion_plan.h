// How the pixels of a picture are laid out between a loader and a saver: as they are where the
// saver can take them so, else as close as it can.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/capabilities.h"
#include "tools/image_description.h"

namespace vorn::tool {

// What the user asks for.
struct ConversionWishes {
    std::optional<int32_t> colorSpace = std::nullopt;
    std::optional<int32_t> depth = std::nullopt;  // 8 or 16
    bool mixesColors = false;  // a scaled picture has colours that its palette doesn't have
    bool onePage = false;      // of a file that holds several
};

struct ConversionPlan {
    int32_t colorSpace = 0;
    int32_t colorChannels = 0;
    int32_t bytesPerChannel = 1;
    bool readAlpha = false;  // the picture has alpha, and the saver keeps it
    bool addAlpha = false;   // the saver wants alpha, and the picture has none: opaque
    bool palette = false;    // the pixels stay indices into the picture's palette
    bool lookUp = false;     // the pixels are the colours that the picture's palette has for them

    int32_t channels() const { return colorChannels + (readAlpha || addAlpha ? 1 : 0); }
};

// Nothing when there is no way; `reason` then says why.
std::optional<ConversionPlan> planConversion(const ImageDescription& image,
                                             const Capabilities& saver,
                                             const ConversionWishes& wishes,
                                             std::string& reason);

}  // namespace vorn::tool
