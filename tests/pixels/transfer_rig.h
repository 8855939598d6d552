// Both ends of a transfer for tests: what a module announces and sends, what a host asks for.
#pragma once

#include <vorn/host.h>

#include "tests/pixels/picture.h"
#include "tests/transport/scripted_peer.h"
#include "transport/tag_exchange.h"

namespace vorn::test {

struct FormatBlock {
    uint32_t byteCount = sizeof(VORN_DataFormat);
    VORN_DataFormat format{};
};

// A picture in a module's own layout: one of the standard ones.
struct ModulePicture {
    ModulePicture(int layout, int width, int height, int channels) {
        format.layout = layout;
        format.width = width;
        format.height = height;
        format.channels = channels;
        VORN_L_DataFormatMacroSetup(&format);
        bytes.resize(static_cast<size_t>(format.lineStep[0] * height));
    }
    void fill(Random& random) {
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(pick(random, 0, 255));
        }
    }
    // The lines as a picture that the slow copy can read.
    Picture picture() const {
        Picture made(format, bytes.size());
        std::memcpy(made.record.channelPlace[0], bytes.data(), bytes.size());
        return made;
    }
    Bytes block(int first, int lines) const {
        const int step = format.lineStep[0];
        const Bytes data(bytes.begin() + first * step, bytes.begin() + (first + lines) * step);
        return MessageBytes()
            .number(ITAG_ReadWidth, format.width)
            .number(ITAG_ReadHeight, lines)
            .number(ITAG_ReadLineNo, first)
            .data(ITAG_Data, data.data(), data.size())
            .end();
    }

    VORN_DataFormat format{};
    Bytes bytes;
};

// Puts what a loader has said about its picture into the handle.
inline void announce(VORN_Image* image, const VORN_DataFormat& format) {
    FormatBlock block;
    block.format = format;
    ASSERT_TRUE(ImageVaAddTags(image, ITAG_DataFormat, VORN_Word(&block), ITAG_Width,
                               VORN_Word(format.width), ITAG_Height, VORN_Word(format.height),
                               TAG_End));
}

inline Bytes emptyReply() { return MessageBytes().end(); }

inline VORN_ImageBuffer imageBuffer(const Picture& picture) {
    return {VORN_BUFFER_CHUNKY, picture.record};
}

}  // namespace vorn::test
