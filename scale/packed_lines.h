// Lines as the methods' kernels want them: samples side by side in memory.
//
// The channels of an image are put into groups. A group of three or four channels is a run of
// channels that lie interleaved in one of the two records; every other channel is a group of its
// own. A packed line holds a group's samples interleaved without gaps. Where a record's line is
// packed already it is used in place, otherwise it is gathered or scattered through a line of
// scratch memory.
#pragma once

#include <vorn/types.h>

#include <cstddef>
#include <span>

#include "support/memory.h"

namespace vorn {

inline constexpr int kMaxGroupChannels = 4;  // groups have 1, 3 or 4 channels

struct ChannelGroup {
    int32_t first;     // its first channel
    int32_t channels;  // 1, 3 or 4
    int32_t before;    // channels in the groups before: where its part of a row begins
    bool sourcePacked;
    bool destinationPacked;
};

class PackedLines {
  public:
    // Groups the channels that are present in both records. False when memory is short.
    bool start(const VORN_ChunkyBuffer& source, const VORN_ChunkyBuffer& destination);
    void release();

    std::span<const ChannelGroup> groups() const { return {groups_, groupCount_}; }
    size_t channels() const { return channels_; }  // of all groups

    // The packed samples of a source line; valid until the next call.
    const void* source(const ChannelGroup& group, int32_t line);

    // Where the packed samples of a destination line go, and the call that ends the line.
    void* destination(const ChannelGroup& group, int32_t line);
    void finish(const ChannelGroup& group, int32_t line);

    // The address of a channel's sample 0 in a line. The channel must be present.
    uint8_t* sourceSample(int32_t channel, int32_t line) const;
    uint8_t* destinationSample(int32_t channel, int32_t line) const;
    const VORN_ChunkyBuffer& sourceRecord() const { return source_; }
    const VORN_ChunkyBuffer& destinationRecord() const { return destination_; }

  private:
    void addGroup(int32_t first, int32_t channels);

    VORN_ChunkyBuffer source_{};  // copies: only their height may change while an image is scaled
    VORN_ChunkyBuffer destination_{};
    ChannelGroup groups_[VORN_MAX_CHANNELS]{};
    size_t groupCount_ = 0;
    size_t channels_ = 0;
    Owned<uint8_t> sourceScratch_;
    Owned<uint8_t> destinationScratch_;
};

}  // namespace vorn
