// Decodes one HEVC picture.
#pragma once

#include <libde265/de265.h>

#include "formats/heif/decoder_plugin.h"

namespace heif {

class HevcDecoder {
  public:
    HevcDecoder();
    ~HevcDecoder();
    HevcDecoder(const HevcDecoder&) = delete;
    HevcDecoder& operator=(const HevcDecoder&) = delete;

    // Units, each behind four bytes with its length.
    void push(std::span<const uint8_t> bytes);
    Decoded decode();

  private:
    de265_decoder_context* context_;
};

}  // namespace heif
