// A small picture of numbers, turned and mirrored by moving them one by one.
#pragma once

#include <cstddef>
#include <vector>

namespace vorn::test {

struct Grid {
    int width = 0;
    int height = 0;
    std::vector<int> values{};

    static Grid counted(int width, int height) {
        Grid grid{width, height};
        for (int i = 0; i < width * height; i++) {
            grid.values.push_back(i + 1);
        }
        return grid;
    }
    int at(int x, int y) const { return values[static_cast<size_t>(y * width + x)]; }
    bool operator==(const Grid&) const = default;

    Grid turnedClockwise() const {
        Grid turned{height, width};
        for (int y = 0; y < turned.height; y++) {
            for (int x = 0; x < turned.width; x++) {
                turned.values.push_back(at(y, height - 1 - x));
            }
        }
        return turned;
    }
    Grid mirrored() const {
        Grid made{width, height};
        for (int y = 0; y < height; y++) {
            for (int x = 0; x < width; x++) {
                made.values.push_back(at(width - 1 - x, y));
            }
        }
        return made;
    }
    // The picture as it looks in an orientation: a quarter turn a step, 4 to 7 mirror images.
    Grid oriented(int orientation) const {
        Grid made = orientation >= 4 ? mirrored() : *this;
        for (int i = 0; i < orientation % 4; i++) {
            made = made.turnedClockwise();
        }
        return made;
    }
};

}  // namespace vorn::test
