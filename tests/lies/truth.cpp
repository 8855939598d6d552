#include "tests/lies/truth.h"

#include <vorn/tags.h>

#include <cstring>

namespace {

int32_t numberAt(std::span<const uint8_t> bytes) {
    int32_t value = 0;
    if (bytes.size() == sizeof value) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

// Calls see(id, data) for each item. False when the list breaks a rule.
template <class See>
bool forEachItem(const Bytes& area, See see) {
    for (size_t at = 0; at + 8 <= area.size();) {
        VORN_TagItem head;
        std::memcpy(&head, area.data() + at, sizeof head);
        if (head.id == TAG_End) return true;
        if (head.id == TAG_Goto || head.id == TAG_Taglist) return false;
        if (head.length < 8 || head.length % 4 != 0 || head.length > area.size() - at) return false;
        see(head.id, std::span(area).subspan(at + 8, head.length - 8));
        at += head.length;
    }
    return false;
}

}  // namespace

std::optional<SentBlock> blockIn(const Bytes& area) {
    SentBlock block;
    std::optional<int32_t> lines;
    std::optional<int32_t> stopped;
    bool hasData = false;
    bool other = false;
    const bool whole = forEachItem(area, [&](uint32_t id, std::span<const uint8_t> data) {
        if (id == ITAG_ReadHeight && !lines) lines = numberAt(data);
        if (id == MTAG_Terminate && !stopped) stopped = numberAt(data);
        if (id == ITAG_Data) hasData = true, block.data = data;
        if (id == ITAG_DataFormat && data.size() == sizeof block.format)
            std::memcpy(&block.format, data.data(), sizeof block.format);
        other = other || id == MTAG_Ack || id == MTAG_ErrorCode;
    });
    block.lines = lines.value_or(block.format.height);
    if (!whole || !hasData || other || stopped.value_or(0) != 0) return std::nullopt;
    return block;
}

std::optional<int32_t> sampleOf(
    const SentBlock& block, const VORN_DataFormat& format, int32_t channel, int32_t x, int32_t y) {
    const int64_t place = format.channelPlace[channel] + int64_t{format.lineStep[channel]} * y +
                          int64_t{format.pixelStep[channel]} * x;
    if (place < 0 || place + format.bytesPerChannel > static_cast<int64_t>(block.data.size()))
        return std::nullopt;
    const uint8_t* sample = block.data.data() + place;
    return format.bytesPerChannel == 2 ? sample[0] + 256 * sample[1] : sample[0];
}

bool mentionsError(const Bytes& area) {
    bool found = false;
    forEachItem(area, [&](uint32_t id, auto) { found = found || id == MTAG_ErrorCode; });
    return found;
}
