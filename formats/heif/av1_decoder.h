// Decodes one AV1 picture.
#pragma once

#include <dav1d/dav1d.h>

#include "formats/heif/decoder_plugin.h"

namespace heif {

class Av1Decoder {
  public:
    Av1Decoder();
    ~Av1Decoder();
    Av1Decoder(const Av1Decoder&) = delete;
    Av1Decoder& operator=(const Av1Decoder&) = delete;

    void push(std::span<const uint8_t> bytes);
    Decoded decode();

  private:
    Dav1dContext* context_ = nullptr;
    Dav1dData data_{};
    Dav1dPicture picture_{};
};

}  // namespace heif
