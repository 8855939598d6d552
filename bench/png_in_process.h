// The same libpng calls in one program.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorn_bench {

struct Rgb {
    uint32_t width = 0, height = 0;
    std::vector<uint8_t> samples;
};

// A picture with smooth parts, edges and some noise.
Rgb paint(uint32_t width, uint32_t height);

void writePng(const std::string& file, const Rgb& picture);
Rgb readPng(const std::string& file);

}  // namespace vorn_bench
