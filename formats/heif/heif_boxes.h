// What a HEIF file's boxes say that libheif tells only with the decoded picture.
#pragma once

#include <cstdint>
#include <vector>

namespace heif {

// Whether the pictures of an item, or of the tiles that it is made of, have no colours. False also
// where the boxes don't tell.
bool isGrey(const std::vector<uint8_t>& file, uint32_t item);

}  // namespace heif
