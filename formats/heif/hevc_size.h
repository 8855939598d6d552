// The size of the pictures that stands in a stream of HEVC.
#pragma once

#include <cstdint>
#include <span>

namespace heif {

// The pixels of a picture when the unit tells them, as sequence parameter sets do; else 0.
int64_t codedPixels(std::span<const uint8_t> unit);

}  // namespace heif
