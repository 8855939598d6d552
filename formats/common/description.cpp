#include "formats/common/description.h"

#include <vorn/module.h>

#include <algorithm>
#include <utility>

#include "formats/common/failure.h"
#include "formats/common/layout.h"

namespace formats {
namespace {

// A data format as the value of a DATA tag.
struct FormatBlock {
    uint32_t byteCount = sizeof(VORN_DataFormat);
    VORN_DataFormat format;
};
static_assert(sizeof(FormatBlock) == 4 + sizeof(VORN_DataFormat));

void check(const Description& d) {
    if (d.width < 1 || d.width > VORN_MAX_SIZE || d.height < 1 || d.height > VORN_MAX_SIZE)
        throw Failure{kUnsupported};
    if (d.channels < 1 || d.channels > VORN_MAX_CHANNELS) throw Failure{kUnsupported};
    if (d.lineBytes() > VORN_M_SendImageDataMaxSize()) throw Failure{kTooWideForBlock};
}

FormatBlock formatOf(const Description& d) {
    FormatBlock block;
    block.format = interleavedFormat(d.width, d.height, d.channels, d.bytesPerChannel, d.alpha);
    const int32_t colors = d.channels - (d.alpha ? 1 : 0);
    std::fill_n(block.format.bitsPerChannel, colors, static_cast<uint8_t>(d.significantBits));
    return block;
}

}  // namespace

void InfoTags::number(uint32_t id, int32_t value) {
    words_.insert(words_.end(), {id, static_cast<VORN_Word>(value)});
}

void InfoTags::text(uint32_t id, std::string value) {
    texts_.push_back(std::move(value));
    words_.insert(words_.end(), {id, reinterpret_cast<VORN_Word>(texts_.back().c_str())});
}

void InfoTags::palette(const std::vector<uint8_t>& rgb) {
    std::vector<uint8_t> entries(rgb);
    const auto count = static_cast<int32_t>(rgb.size() / 3);
    const VORN_ChunkyBuffer line = interleavedBuffer(entries.data(), count, 1, 3, 1);
    palette_.reset(VORN_H_CreatePaletteData(&line, VORN_CS_RGB));
    if (!palette_) throw Failure{kOutOfMemory};
    words_.insert(words_.end(), {ITAG_Palette, reinterpret_cast<VORN_Word>(palette_.get())});
}

void announce(const Description& description) {
    check(description);
    const FormatBlock format = formatOf(description);
    std::vector<VORN_Word> words{reinterpret_cast<VORN_Word>(&format), ITAG_ColorSpace,
                                 static_cast<VORN_Word>(description.colorSpace), ITAG_Orientation,
                                 static_cast<VORN_Word>(description.orientation)};
    const std::vector<VORN_Word>& more = description.tags.words();
    words.insert(words.end(), more.begin(), more.end());
    words.push_back(TAG_End);
    // Only tags too long for the area can fail here: the host is waiting for this answer.
    if (!VORN_M_SetImageInfoTags(ITAG_DataFormat, words.data())) throw Failure{kTooWideForBlock};
}

}  // namespace formats
