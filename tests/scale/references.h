// Plain references: whole images, straight from the definitions, in 64-bit integers.
#pragma once

#include <cmath>

#include "tests/scale/test_image.h"

namespace vorn_test {

inline int32_t nearestItem(int64_t i, int64_t n, int64_t m) {
    return static_cast<int32_t>(n > m ? (i * n + m - 1) / m : i * n / m);
}

inline Image referenceNearest(const Image& image, int32_t width, int32_t lines) {
    Image result(width, lines, image.channels, image.bytes);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            for (int32_t c = 0; c < image.channels; ++c) {
                result.at(x, y, c) = image.at(nearestItem(x, image.width, width),
                                              nearestItem(y, image.lines, lines), c);
            }
        }
    }
    return result;
}

inline int64_t bilinearPosition(int64_t i, int64_t n, int64_t m, int64_t unit) {
    return m == 1 ? 0 : i * (n - 1) * unit / (m - 1);
}

inline Image referenceBilinear(const Image& image, int32_t width, int32_t lines) {
    Image result(width, lines, image.channels, image.bytes);
    const int bits = image.bytes == 1 ? 16 : 15;
    const int64_t unit = int64_t{1} << bits;
    for (int32_t y = 0; y < lines; ++y) {
        const int64_t py = bilinearPosition(y, image.lines, lines, unit);
        const auto yi = static_cast<int32_t>(py / unit);
        const int64_t lowerWeight = py % unit, upperWeight = unit - lowerWeight;
        for (int32_t x = 0; x < width; ++x) {
            const int64_t px = bilinearPosition(x, image.width, width, unit);
            const auto xi = static_cast<int32_t>(px / unit);
            const int64_t right = px % unit, left = unit - right;
            for (int32_t c = 0; c < image.channels; ++c) {
                const auto across = [&](int32_t line) {
                    int64_t sum = image.at(xi, line, c) * left;
                    if (right != 0) sum += image.at(xi + 1, line, c) * right;
                    return sum;
                };
                int64_t sum = across(yi);
                if (lowerWeight != 0) {
                    sum = (sum >> bits) * upperWeight + (across(yi + 1) >> bits) * lowerWeight;
                }
                result.at(x, y, c) = static_cast<int32_t>((sum + unit / 2) >> bits);
            }
        }
    }
    return result;
}

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

struct CubicEntry {
    int32_t first;
    std::vector<int64_t> weights;  // a single sample has none
};

// The Mitchell-Netravali cubic with B and C as they are commonly written.
inline double cubic(double x, double b, double c) {
    const double d = std::fabs(x);
    if (d < 1) {
        return ((12 - 9 * b - 6 * c) * d * d * d + (-18 + 12 * b + 6 * c) * d * d + (6 - 2 * b)) /
               6;
    }
    if (d < 2) {
        return ((-b - 6 * c) * d * d * d + (6 * b + 30 * c) * d * d + (-12 * b - 48 * c) * d +
                (8 * b + 24 * c)) /
               6;
    }
    return 0;
}

inline std::vector<CubicEntry> cubicEntries(int32_t in, int32_t out, double blur) {
    const double ratio = static_cast<double>(in) / out, inverse = static_cast<double>(out) / in;
    const bool reducing = in > out;
    if (blur < 1) {
        blur = reducing ? 1 - (1 - inverse * 0.25) * (1 - blur) : 0.75 * blur + 0.25;
    }
    const double reach = reducing ? ratio : 1.0;  // source items for one unit of the kernel
    const double b = blur >= 1 ? 1.0 / 3 : std::min(5.0 / 3 - 4.0 / 3 * blur, 1.0);
    const double tiny = std::ldexp(1.0, -20);
    std::vector<CubicEntry> entries;
    double centre = 0.5 * ratio - 0.5;
    for (int32_t i = 0; i < out; ++i, centre += ratio) {
        const auto left = static_cast<int32_t>(std::ceil(centre - 2 * blur * reach + tiny));
        const auto right = static_cast<int32_t>(std::floor(centre + 2 * blur * reach - tiny));
        const int32_t first = std::clamp(left, 0, in - 1);
        const int32_t last = right < first ? first : std::min(right, in - 1);
        CubicEntry entry{first, {}};
        std::vector<double> exact;
        double sum = 0;
        for (int32_t k = first; k <= last && last > first; ++k) {
            exact.push_back(cubic((centre - k) / (blur * reach), b, (1 - b) / 2));
            sum += exact.back();
        }
        entry.weights.resize(exact.size());
        double carry = 0.5;
        for (size_t k = 0; k < exact.size(); ++k) {
            const size_t at = 2 * i < out ? k : exact.size() - 1 - k;
            const double weight = exact[at] * (16384 / sum) + carry + tiny;
            entry.weights[at] = static_cast<int64_t>(std::floor(weight));
            carry = weight - std::floor(weight);
        }
        entries.push_back(entry);
    }
    return entries;
}

inline int64_t cubicRowValue(const Image& image, const CubicEntry& entry, int32_t y, int32_t c) {
    const bool wide = image.bytes == 2;
    if (entry.weights.empty()) return image.at(entry.first, y, c) * (wide ? 1 : 257);
    int64_t sum = 0;
    for (size_t k = 0; k < entry.weights.size(); ++k) {
        sum += image.at(entry.first + static_cast<int32_t>(k), y, c) * entry.weights[k];
    }
    return wide ? sum >> 14 : (sum >> 6) + (sum >> 14);
}

inline Image referenceBicubic(const Image& image, int32_t width, int32_t lines, double blur = 1.0) {
    const auto columns = cubicEntries(image.width, width, blur);
    const auto rows = cubicEntries(image.lines, lines, blur);
    Image result(width, lines, image.channels, image.bytes);
    std::vector<int64_t> values(static_cast<size_t>(image.lines));
    for (int32_t x = 0; x < width; ++x) {
        for (int32_t c = 0; c < image.channels; ++c) {
            for (int32_t y = 0; y < image.lines; ++y) {
                values[static_cast<size_t>(y)] =
                    cubicRowValue(image, columns[static_cast<size_t>(x)], y, c);
            }
            for (int32_t y = 0; y < lines; ++y) {
                const CubicEntry& entry = rows[static_cast<size_t>(y)];
                const auto first = static_cast<size_t>(entry.first);
                int64_t sum = entry.weights.empty() ? values[first] * 16384 : 0;
                for (size_t k = 0; k < entry.weights.size(); ++k) {
                    sum += values[first + k] * entry.weights[k];
                }
                const int64_t value = sum >> (image.bytes == 1 ? 22 : 14);
                result.at(x, y, c) =
                    static_cast<int32_t>(std::clamp<int64_t>(value, 0, image.largest()));
            }
        }
    }
    return result;
}

}  // namespace vorn_test
