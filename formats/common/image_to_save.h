// What a saver is told about the image that it is to write.
#pragma once

#include <vorn/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace formats {

struct ImageToSave {
    std::string fileName;
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;         // alpha included
    int32_t bytesPerChannel = 1;  // 1 or 2
    int32_t colorSpace = VORN_CS_RGB;
    bool alpha = false;                     // the last channel is alpha
    const VORN_TagItem* message = nullptr;  // valid while the image is being opened

    // Further tags of the message, while the image is being opened.
    std::optional<int32_t> number(uint32_t id) const;
    std::string text(uint32_t id) const;  // "" when there is none
    // The palette as red, green and blue of each entry in turn; empty when there is none.
    std::vector<uint8_t> palette() const;
};

// Throws when the message doesn't describe an image.
ImageToSave imageToSave(const VORN_TagItem* message);

}  // namespace formats
