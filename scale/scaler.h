// The scaler interface, and the band protocol that all scaling methods share.
#pragma once

#include <vorn/scaler.h>

#include <cstddef>

#include "scale/band_ring.h"
#include "scale/packed_lines.h"
#include "support/memory.h"

struct VORN_Scaler {};

namespace vorn {

// One image to scale: what VORN_S_InitScale is given.
struct ScaleJob {
    int32_t srcLines;
    int32_t dstLines;
    const VORN_ChunkyBuffer* source;
    const VORN_ChunkyBuffer* destination;
    VORN_LineCallback lineCallback = nullptr;
    void* userData = nullptr;
};

class Scaler : public VORN_Scaler {
  public:
    virtual ~Scaler() = default;
    virtual int32_t InitScale(const ScaleJob& job) = 0;
    virtual void EndScale() = 0;
    virtual int32_t SendData() = 0;

    static void* operator new(size_t size) noexcept { return AllocMemory(size, 0); }
    static void operator delete(void* object) { FreeMemory(object); }
};

// The smallest and largest width or height that a method takes.
struct SizeRange {
    int32_t smallest = 1;
    int32_t largest = VORN_MAX_SIZE;
};

// A scaler as far as all methods are alike. A method takes the source lines that it needs out of
// the source ring and makes one destination line at a time; when to do so is decided here.
class BandScaler : public Scaler {
  public:
    int32_t InitScale(const ScaleJob& job) final;
    void EndScale() final;
    int32_t SendData() final;

  protected:
    explicit BandScaler(SizeRange range = {}) : range_(range) {}

    // Makes the tables and buffers for the image described by the members below. False when memory
    // is short.
    virtual bool prepare() = 0;

    // Releases them. Also called after a prepare that failed half way, and more than once.
    virtual void release() = 0;

    // Takes source lines until the next destination line can be made. False when the ring ran empty
    // before that; the next call goes on where this one stopped.
    virtual bool takeLines() = 0;

    // Makes the next destination line.
    virtual void makeLine() = 0;

    // Makes at least one and at most `most` destination lines from the source lines taken; the
    // result is how many. There is room for all of them, one below the other.
    virtual int32_t makeLines([[maybe_unused]] int32_t most) {
        makeLine();
        return 1;
    }

    int32_t srcWidth_ = 0;
    int32_t srcLines_ = 0;
    int32_t dstWidth_ = 0;
    int32_t dstLines_ = 0;
    int32_t bytes_ = 1;    // per sample
    PackedLines lines_;    // the channels present in both records
    BandRing sourceRing_;  // the line at its read side is the current one
    BandRing destinationRing_;

    // The source line at the ring's read side, or one behind it, of one group of channels.
    template <class Sample>
    const Sample* sourceLine(const ChannelGroup& group, int32_t behind = 0) {
        return static_cast<const Sample*>(lines_.source(group, sourceRing_.readLine(behind)));
    }

    // Where the next destination line of a group goes, and the call that ends it.
    template <class Sample>
    Sample* destinationLine(const ChannelGroup& group) {
        return static_cast<Sample*>(lines_.destination(group, destinationRing_.writeLine()));
    }
    template <class Sample>  // of a group that is packed there
    ptrdiff_t destinationLineStep(const ChannelGroup& group) const {
        return lines_.destinationRecord().lineStep[group.first] /
               static_cast<ptrdiff_t>(sizeof(Sample));
    }
    void finishDestinationLine(const ChannelGroup& group) {
        lines_.finish(group, destinationRing_.writeLine());
    }

  private:
    int32_t checkJob(const ScaleJob& job) const;
    bool start(const ScaleJob& job);
    bool allLinesMade() const { return destinationRing_.written() >= dstLines_; }
    int32_t linesAtOnce() const;

    SizeRange range_;
    bool ready_ = false;
    const VORN_ChunkyBuffer* sourceRecord_ = nullptr;
    VORN_LineCallback lineCallback_ = nullptr;
    void* userData_ = nullptr;
};

}  // namespace vorn
