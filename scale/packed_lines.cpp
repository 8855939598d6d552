#include "scale/packed_lines.h"

#include <cstring>

namespace vorn {
namespace {

// A row of samples at a fixed distance from each other.
struct Row {
    uint8_t* place;
    ptrdiff_t step;
};

template <class Sample>
void copySamples(Row to, Row from, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        std::memcpy(to.place + i * to.step, from.place + i * from.step, sizeof(Sample));
    }
}

void copySamples(Row to, Row from, int32_t count, int32_t bytes) {
    if (bytes == 1) {
        copySamples<uint8_t>(to, from, count);
    } else {
        copySamples<uint16_t>(to, from, count);
    }
}

uint8_t* sampleAt(const VORN_ChunkyBuffer& record, int32_t channel, int32_t line) {
    return record.channelPlace[channel] + static_cast<ptrdiff_t>(record.lineStep[channel]) * line;
}

// Whether the lines of channels first ... first + count - 1 are packed in this record, and where
// 16-bit samples can be read as such.
bool packed(const VORN_ChunkyBuffer& record, int32_t first, int32_t count) {
    const int32_t bytes = record.bytesPerChannel;
    if (first + count > record.channels) return false;
    const uint8_t* place = record.channelPlace[first];
    if (reinterpret_cast<uintptr_t>(place) % static_cast<unsigned>(bytes) != 0) return false;
    for (int32_t c = first; c < first + count; ++c) {
        if (record.pixelStep[c] != count * bytes || record.lineStep[c] % bytes != 0 ||
            record.lineStep[c] != record.lineStep[first] || !record.channelPlace[c] ||
            record.channelPlace[c] != place + (c - first) * bytes) {
            return false;
        }
    }
    return true;
}

bool present(const VORN_ChunkyBuffer& record, int32_t first, int32_t count) {
    for (int32_t c = first; c < first + count; ++c) {
        if (c >= record.channels || !record.channelPlace[c]) return false;
    }
    return true;
}

bool allocateScratch(Owned<uint8_t>& scratch, const VORN_ChunkyBuffer& record) {
    const auto samples = static_cast<size_t>(record.width) * kMaxGroupChannels;
    scratch.reset(static_cast<uint8_t*>(
        AllocMemory(samples * static_cast<size_t>(record.bytesPerChannel), 0)));
    return scratch != nullptr;
}

}  // namespace

bool PackedLines::start(const VORN_ChunkyBuffer& source, const VORN_ChunkyBuffer& destination) {
    source_ = source;
    destination_ = destination;
    groupCount_ = channels_ = 0;
    for (int32_t c = 0; c < source.channels;) {
        int32_t count = 1;
        for (const int32_t wanted : {4, 3}) {
            if (present(source, c, wanted) && present(destination, c, wanted) &&
                (packed(source, c, wanted) || packed(destination, c, wanted))) {
                count = wanted;
                break;
            }
        }
        if (present(source, c, count) && present(destination, c, count)) addGroup(c, count);
        c += count;
    }
    bool gather = false;
    bool scatter = false;
    for (const ChannelGroup& group : groups()) {
        gather |= !group.sourcePacked;
        scatter |= !group.destinationPacked;
    }
    return (!gather || allocateScratch(sourceScratch_, source)) &&
           (!scatter || allocateScratch(destinationScratch_, destination));
}

void PackedLines::addGroup(int32_t first, int32_t channels) {
    groups_[groupCount_++] = {first, channels, static_cast<int32_t>(channels_),
                              packed(source_, first, channels),
                              packed(destination_, first, channels)};
    channels_ += static_cast<size_t>(channels);
}

void PackedLines::release() {
    groupCount_ = channels_ = 0;
    sourceScratch_.reset();
    destinationScratch_.reset();
}

uint8_t* PackedLines::sourceSample(int32_t channel, int32_t line) const {
    return sampleAt(source_, channel, line);
}

uint8_t* PackedLines::destinationSample(int32_t channel, int32_t line) const {
    return sampleAt(destination_, channel, line);
}

const void* PackedLines::source(const ChannelGroup& group, int32_t line) {
    if (group.sourcePacked) return sourceSample(group.first, line);
    const int32_t bytes = source_.bytesPerChannel;
    for (int32_t c = 0; c < group.channels; ++c) {
        copySamples({sourceScratch_.get() + c * bytes, group.channels * bytes},
                    {sourceSample(group.first + c, line), source_.pixelStep[group.first + c]},
                    source_.width, bytes);
    }
    return sourceScratch_.get();
}

void* PackedLines::destination(const ChannelGroup& group, int32_t line) {
    if (group.destinationPacked) return destinationSample(group.first, line);
    return destinationScratch_.get();
}

void PackedLines::finish(const ChannelGroup& group, int32_t line) {
    if (group.destinationPacked) return;
    const int32_t bytes = destination_.bytesPerChannel;
    for (int32_t c = 0; c < group.channels; ++c) {
        copySamples(
            {destinationSample(group.first + c, line), destination_.pixelStep[group.first + c]},
            {destinationScratch_.get() + c * bytes, group.channels * bytes}, destination_.width,
            bytes);
    }
}

}  // namespace vorn
