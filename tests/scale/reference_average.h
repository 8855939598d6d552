// Plain reference: whole images, straight from the definition.
#pragma once

#include "tests/scale/test_image.h"

namespace vorn_test {

struct WeightedItem {
    int32_t item;
    int64_t weight;
};

inline int shiftFor(int64_t n) {
    int s = 0;
    while ((int64_t{1} << s) < n) ++s;
    return s;
}

// Destination item i covers units i * n ... (i + 1) * n, source item j units j * m ... (j + 1) * m.
// The weights of the parts up to a point add up to that point's exact share, rounded half up.
inline std::vector<WeightedItem> coveredItems(int64_t i, int64_t n, int64_t m) {
    std::vector<WeightedItem> items;
    const int64_t unit = int64_t{1} << shiftFor(n);
    const int64_t begin = i * n;
    const auto upTo = [&](int64_t length) { return (2 * length * unit + n) / (2 * n); };
    for (int64_t j = begin / m; j * m < begin + n; ++j) {
        const int64_t from = std::max(j * m, begin) - begin;
        const int64_t to = std::min((j + 1) * m, begin + n) - begin;
        items.push_back({static_cast<int32_t>(j), upTo(to) - upTo(from)});
    }
    return items;
}

inline Image referenceAverage(const Image& image, int32_t width, int32_t lines) {
    Image result(width, lines, image.channels, image.bytes);
    const int shift = shiftFor(image.width) + shiftFor(image.lines);
    for (int32_t y = 0; y < lines; ++y) {
        const auto rows = coveredItems(y, image.lines, lines);
        for (int32_t x = 0; x < width; ++x) {
            const auto columns = coveredItems(x, image.width, width);
            for (int32_t c = 0; c < image.channels; ++c) {
                uint64_t sum = 0;
                for (const WeightedItem& row : rows) {
                    for (const WeightedItem& column : columns) {
                        sum += static_cast<uint64_t>(image.at(column.item, row.item, c)) *
                               static_cast<uint64_t>(row.weight * column.weight);
                    }
                }
                const bool up = shift > 0 && ((sum >> (shift - 1)) & 1);
                result.at(x, y, c) = static_cast<int32_t>(sum >> shift) + (up ? 1 : 0);
            }
        }
    }
    return result;
}

}  // namespace vorn_test
