// A host's handle of a module, and its pixels.
#pragma once

#include <vorn/host.h>

#include <string>
#include <vector>

#include "formats/common/layout.h"

class Image {
  public:
    Image(const char* module, int32_t type) : image_(VORN_H_ModuleVaOpen(module, type, TAG_End)) {}
    ~Image() { VORN_H_ModuleClose(image_); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    bool open(const std::string& path) const {
        return VORN_H_ImageVaOpen(image_, ITAG_Filename, path.c_str(), TAG_End);
    }
    bool close() const { return VORN_H_ImageClose(image_); }
    int32_t error() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image_)); }
    int32_t subcode() const { return VORN_ErrorPairSubcode(VORN_H_ImageGetError(image_)); }
    VORN_Image* get() const { return image_; }

  private:
    VORN_Image* image_;
};

// Pixels of a host: samples side by side.
struct Pixels {
    Pixels(int32_t width, int32_t height, int32_t channels, int32_t bytes)
        : samples(static_cast<size_t>(width * height * channels * bytes)) {
        buffer.type = VORN_BUFFER_CHUNKY;
        buffer.chunky = formats::interleavedBuffer(samples.data(), width, height, channels, bytes);
    }
    std::vector<uint8_t> samples;
    VORN_ImageBuffer buffer;
};
