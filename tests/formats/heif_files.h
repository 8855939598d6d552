// HEIF files whose boxes don't tell the truth.
#pragma once

#include <cstdint>
#include <string>

// The size that stands in the file's boxes, wherever the picture's own is.
inline std::string withSize(std::string file, uint32_t width, uint32_t height) {
    for (size_t at = 0; (at = file.find("ispe", at)) != std::string::npos; ++at) {
        for (int i = 0; i < 4; ++i) {
            file[at + 8 + static_cast<size_t>(i)] = static_cast<char>(width >> (24 - 8 * i));
            file[at + 12 + static_cast<size_t>(i)] = static_cast<char>(height >> (24 - 8 * i));
        }
    }
    return file;
}
