#include "tests/pixels/picture.h"

#include <algorithm>
#include <numeric>

namespace vorn::test {
namespace {

VORN_DataFormat header(const Shape& shape, int layout = DF_Explicit) {
    return {layout, shape.width, shape.height, shape.channels, shape.bytes, 0, {}, {}, {}, {}};
}

// Turns a step around, so that the first sample lies where the last one did.
void turnAround(uint32_t& place, int32_t& step, int count) {
    place = static_cast<uint32_t>(static_cast<int64_t>(place) + int64_t{step} * (count - 1));
    step = -step;
}

void turnAtRandom(Random& random, VORN_DataFormat& format, int first, int channels) {
    const bool columns = pick(random, 0, 3) == 0;
    const bool lines = pick(random, 0, 3) == 0;
    for (int c = first; c < first + channels; c++) {
        if (columns) {
            turnAround(format.channelPlace[c], format.pixelStep[c], format.width);
        }
        if (lines) {
            turnAround(format.channelPlace[c], format.lineStep[c], format.height);
        }
    }
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

Picture Picture::interleaved(Random& random, const Shape& shape) {
    VORN_DataFormat format = header(shape);
    std::vector<int> order(static_cast<size_t>(shape.channels + pick(random, 0, 2)));
    std::iota(order.begin(), order.end(), 0);
    if (pick(random, 0, 1) == 1) {
        std::shuffle(order.begin(), order.end(), random);
    }
    const int odd = pick(random, 0, 3) == 0 ? 1 : 0;  // cells need not be whole samples
    const int cell = static_cast<int>(order.size()) * shape.bytes + odd;
    const int line = cell * shape.width + pick(random, 0, 5);
    for (int c = 0; c < shape.channels; c++) {
        format.pixelStep[c] = cell;
        format.lineStep[c] = line;
        format.channelPlace[c] = static_cast<uint32_t>(order[static_cast<size_t>(c)] * shape.bytes);
    }
    turnAtRandom(random, format, 0, shape.channels);
    return Picture(format, static_cast<size_t>(line * shape.height));
}

Picture Picture::planes(Random& random, const Shape& shape) {
    VORN_DataFormat format = header(shape);
    int used = 0;
    for (int c = 0; c < shape.channels; c++) {
        const int step = shape.bytes + (pick(random, 0, 1) == 0 ? 0 : pick(random, 0, 8));
        const int line = step * shape.width + pick(random, 0, 3);
        format.pixelStep[c] = step;
        format.lineStep[c] = line;
        format.channelPlace[c] = static_cast<uint32_t>(used);
        used += line * shape.height + pick(random, 0, 3);
        turnAtRandom(random, format, c, 1);
    }
    return Picture(format, static_cast<size_t>(used));
}

Picture Picture::any(Random& random, const Shape& shape) {
    const int kind = pick(random, 0, 2);
    if (kind == 1) {
        return interleaved(random, shape);
    }
    if (kind == 2) {
        return planes(random, shape);
    }
    const int mostForCode[] = {8, 4, 3};
    int code = pick(random, 1, 3);
    if (shape.channels > mostForCode[code - 1]) {
        code = 1;
    }
    return standard(code + (shape.bytes == 2 ? 3 : 0), shape.width, shape.height, shape.channels);
}

void Picture::fill(Random& random) {
    for (uint8_t& byte : memory) {
        const int value = pick(random, -40, 295);  // the ends of the range count more
        byte = static_cast<uint8_t>(std::clamp(value, 0, 255));
    }
}

Picture Picture::clone() const {
    Picture copy = *this;
    for (uint8_t*& place : copy.record.channelPlace) {
        if (place != nullptr) {
            place = copy.memory.data() + (place - memory.data());
        }
    }
    return copy;
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
    if (record.bytesPerChannel == 2) {
        sample[1] = static_cast<uint8_t>(value >> 8);
    }
}

}  // namespace vorn::test
