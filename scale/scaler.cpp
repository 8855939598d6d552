#include "scale/scaler.h"

#include <algorithm>

namespace vorn {

int32_t BandScaler::checkJob(const ScaleJob& job) const {
    const VORN_ChunkyBuffer& source = *job.source;
    const VORN_ChunkyBuffer& destination = *job.destination;
    if (source.channels != destination.channels || source.channels < 1 ||
        source.channels > VORN_MAX_CHANNELS) {
        return VORN_S_CHANNELS_DIFFER;
    }
    if (source.bytesPerChannel != destination.bytesPerChannel || source.bytesPerChannel < 1 ||
        source.bytesPerChannel > 2) {
        return VORN_S_BYTES_DIFFER;
    }
    for (const int32_t size : {source.width, job.srcLines, destination.width, job.dstLines}) {
        if (size < range_.smallest || size > range_.largest) return VORN_S_BAD_SIZE;
    }
    if (source.height < 1 || destination.height < 1) return VORN_S_BAD_SIZE;
    return VORN_S_READY;
}

bool BandScaler::start(const ScaleJob& job) {
    srcWidth_ = job.source->width;
    srcLines_ = job.srcLines;
    dstWidth_ = job.destination->width;
    dstLines_ = job.dstLines;
    bytes_ = job.source->bytesPerChannel;
    sourceRing_ = BandRing(job.source->height);
    destinationRing_ = BandRing(job.destination->height);
    sourceRecord_ = job.source;
    lineCallback_ = job.lineCallback;
    userData_ = job.userData;
    return lines_.start(*job.source, *job.destination) && prepare();
}

int32_t BandScaler::InitScale(const ScaleJob& job) {
    EndScale();
    const int32_t check = checkJob(job);
    if (check != VORN_S_READY) return check;
    if (!start(job)) {
        EndScale();
        return VORN_S_NO_MEMORY;
    }
    ready_ = true;
    return VORN_S_READY;
}

void BandScaler::EndScale() {
    ready_ = false;
    release();
    lines_.release();
}

// One after the other when each is announced, for nothing beyond it may be written then.
int32_t BandScaler::linesAtOnce() const {
    const auto left = static_cast<int32_t>(dstLines_ - destinationRing_.written());
    return lineCallback_ ? 1 : std::min(left, destinationRing_.freeBelow());
}

int32_t BandScaler::SendData() {
    if (!ready_) return VORN_S_CANT_GO_ON;
    while (!destinationRing_.full() && !allLinesMade() && takeLines()) {
        destinationRing_.put(makeLines(linesAtOnce()));
        if (lineCallback_ && lineCallback_(userData_) != 0) return VORN_S_STOPPED;
    }
    const bool linesDue = sourceRing_.empty() && sourceRing_.written() < srcLines_;
    if (linesDue && !allLinesMade()) {
        sourceRing_.refill(sourceRecord_->height);
        return VORN_S_FILL_SOURCE;
    }
    if (destinationRing_.empty()) return VORN_S_FINISHED;
    destinationRing_.takeAll();
    return VORN_S_TAKE_DESTINATION;
}

}  // namespace vorn
