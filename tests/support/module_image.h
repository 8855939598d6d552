// A host's handle of a module, and its pixels.
#pragma once

#include <vorn/host.h>

#include <algorithm>
#include <string>
#include <vector>

#include "formats/common/layout.h"

// Pixels of a host: samples side by side.
struct Pixels {
    Pixels(int32_t width, int32_t height, int32_t channels, int32_t bytes)
        : samples(static_cast<size_t>(width * height * channels * bytes)) {
        buffer.type = VORN_BUFFER_CHUNKY;
        buffer.chunky = formats::interleavedBuffer(samples.data(), width, height, channels, bytes);
    }
    // With no more samples than there is room for.
    void fill(const std::vector<uint8_t>& some) {
        std::copy(some.begin(), some.end(), samples.begin());
    }

    std::vector<uint8_t> samples;
    VORN_ImageBuffer buffer;
};

class Image {
  public:
    Image(const std::string& module, int32_t type)
        : image_(VORN_H_ModuleVaOpen(module.c_str(), type, TAG_End)) {}
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

    // Tags and their values in turn: numbers and addresses.
    template <class... Words>
    bool set(Words... words) const {
        const VORN_Word tags[] = {VORN_Word(words)..., TAG_End};
        return VORN_H_ImageSetTags(image_, tags);
    }
    // 0 when the image has no such tag.
    int32_t number(uint32_t id) const {
        int32_t value = 0;
        VORN_H_ImageVaGetTags(image_, id, &value, TAG_End);
        return value;
    }
    bool read(const Pixels& pixels) const {
        return VORN_H_ImageVaReadData(image_, &pixels.buffer, TAG_End);
    }
    bool write(const Pixels& pixels) const {
        return VORN_H_ImageVaWriteData(image_, &pixels.buffer, TAG_End);
    }

  private:
    VORN_Image* image_;
};
