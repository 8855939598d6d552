// Signatures: how the files of a format begin.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vorn {

// How many bits of the file's head the best matching signature of a comma list pins down: 8 for a
// given byte, fewer for one that may have several values, none for any byte. 0: none matches. A
// signature is `offset:pattern`; a pattern is made of
//
//     89          a byte, as two hexadecimal digits
//     ..          any byte
//     'PNG'       the bytes of a text
//     [09-0D20]   one byte out of ranges and single bytes
//
// A signature that breaks these rules matches nothing.
uint32_t bitsPinnedDown(std::string_view signatures, std::span<const uint8_t> head);

}  // namespace vorn
