#include "tests/pixels/picture.h"

#include <algorithm>
#include <numeric>

#include "tests/modules/explicit_steps.h"

namespace vorn::test {
namespace {

VORN_DataFormat header(const Shape& shape, int layout = DF_Explicit) {
    return {layout, shape.width, shape.height, shape.channels, shape.bytes, 0, {}, {}, {}, {}};
}

}  // namespace

Picture::Picture(const VORN_DataFormat& format, size_t size, size_t guard)
    : memory(size + 2 * guard, kUntouched) {
    VORN_L_InitChunkyBufferFromDataFormat(&record, &format);
    for (int c = 0; c < format.channels; c++) {
        record.pixelStep[c] = format.pixelStep[c];
        record.lineStep[c] = format.lineStep[c];
        record.channelPlace[c] = memory.data() + guard + format.channelPlace[c];
    }
}

Picture Picture::standard(int layout, int width, int height, int channels, size_t guard) {
    VORN_DataFormat format = header({width, height, channels, 1}, layout);
    VORN_L_DataFormatMacroSetup(&format);
    const auto lineBytes = static_cast<size_t>(format.lineStep[0]);
    return Picture(format, lineBytes * static_cast<size_t>(height), guard);
}

Picture Picture::inForm(const char* form, const Shape& shape, size_t guard) {
    VORN_DataFormat format = header(shape);
    const int32_t size = setExplicitSteps(format, form, shape.height);
    return Picture(format, static_cast<size_t>(size), guard);
}

// Half of them in one form; in the others groups of channels lie one behind the other, each in a
// form of its own, in any order and with unused channels between its own.
Picture Picture::any(Random& random, const Shape& shape, size_t guard) {
    const auto anyForm = [&] { return kExplicitForms[pick(random, 0, 7)]; };
    if (pick(random, 0, 1) == 0) return inForm(anyForm(), shape, guard);
    const auto sometimes = [&](int low, int high, int otherwise) {
        return pick(random, 0, 2) == 0 ? pick(random, low, high) : otherwise;
    };
    VORN_DataFormat format = header(shape);
    int used = 0;
    for (int first = 0, count; first < shape.channels; first += count) {
        count = sometimes(1, shape.channels - first, shape.channels - first);
        VORN_DataFormat group = format;
        group.channels = sometimes(count, VORN_MAX_CHANNELS, count);
        const int size = setExplicitSteps(group, anyForm(), shape.height);
        int order[VORN_MAX_CHANNELS];
        std::iota(order, order + group.channels, 0);
        std::shuffle(order, order + group.channels, random);
        for (int c = 0; c < count; c++) {
            format.pixelStep[first + c] = group.pixelStep[order[c]];
            format.lineStep[first + c] = group.lineStep[order[c]];
            format.channelPlace[first + c] =
                static_cast<uint32_t>(used) + group.channelPlace[order[c]];
        }
        used += size;
    }
    return Picture(format, static_cast<size_t>(used), guard);
}

void Picture::fill(Random& random) {
    for (uint8_t& byte : memory) {
        const int value = pick(random, -40, 295);  // the ends of the range count more
        byte = static_cast<uint8_t>(std::clamp(value, 0, 255));
    }
}

Picture Picture::clone() const {
    Picture copy = *this;
    copy.record = recordAt(copy.memory.data());
    return copy;
}

VORN_ChunkyBuffer Picture::recordAt(uint8_t* bytes) const {
    VORN_ChunkyBuffer moved = record;
    for (uint8_t*& place : moved.channelPlace)
        if (place != nullptr) place = bytes + (place - memory.data());
    return moved;
}

bool Picture::hasIntactGaps() {
    for (int c = 0; c < record.channels; ++c) {
        for (int i = 0; has(c) && i < record.width * record.height; ++i)
            set(c, i % record.width, i / record.width, kUntouched * 257);
    }
    return std::all_of(memory.begin(), memory.end(), [](uint8_t b) { return b == kUntouched; });
}

uint8_t* Picture::at(int channel, int x, int y) const {
    return record.channelPlace[channel] + int64_t{y} * record.lineStep[channel] +
           int64_t{x} * record.pixelStep[channel];
}

int Picture::get(int channel, int x, int y) const {
    const uint8_t* sample = at(channel, x, y);
    return record.bytesPerChannel == 2 ? sample[0] + 256 * sample[1] : sample[0];
}

void Picture::set(int channel, int x, int y, int value) {
    uint8_t* sample = at(channel, x, y);
    sample[0] = static_cast<uint8_t>(value);
    if (record.bytesPerChannel == 2) sample[1] = static_cast<uint8_t>(value >> 8);
}

}  // namespace vorn::test
