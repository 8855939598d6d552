// The decoders of AV1 and HEVC that libheif is given. Those that it brings decode whatever size the
// compressed data claims, take want of memory for damage, and one writes to standard error.
#pragma once

#include <cstdint>

namespace heif {

// From the first call on, libheif takes these.
void useOwnDecoders();

// A picture with more pixels is damaged: for all that are decoded from now on.
void limitCodedPixels(int64_t pixels);
int64_t mostCodedPixels();

}  // namespace heif
