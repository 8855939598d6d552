// A mountain lake in the evening.
#pragma once

#include <cstdint>
#include <vector>

// Three bytes a pixel, red, green, blue, line by line from the top.
std::vector<uint8_t> paintScene(int width, int height);
