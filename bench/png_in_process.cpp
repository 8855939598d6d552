#include "png_in_process.h"

#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace vorn_bench {
namespace {

std::FILE* open(const std::string& file, const char* mode) {
    std::FILE* stream = std::fopen(file.c_str(), mode);
    if (!stream) std::abort();
    return stream;
}

std::vector<png_bytep> lines(Rgb& picture) {
    std::vector<png_bytep> all;
    for (size_t y = 0; y < picture.height; ++y)
        all.push_back(picture.samples.data() + y * picture.width * 3);
    return all;
}

}  // namespace

Rgb paint(uint32_t width, uint32_t height) {
    Rgb picture{width, height, std::vector<uint8_t>(size_t{3} * width * height)};
    std::minstd_rand random(7);
    uint8_t* sample = picture.samples.data();
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const double hill = std::sin(x * 0.011) + std::sin(y * 0.017 + x * 0.003);
            const bool edge = (x / 97 + y / 61) % 5 == 0;
            for (int c = 0; c < 3; ++c) {
                const double value = 128 + 40 * hill + (edge ? 30 - 20 * c : 8 * c);
                *sample++ = static_cast<uint8_t>(value + static_cast<double>(random() % 5));
            }
        }
    }
    return picture;
}

void writePng(const std::string& file, const Rgb& picture) {
    std::FILE* stream = open(file, "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream);
    png_set_IHDR(png, info, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_write_image(png, lines(const_cast<Rgb&>(picture)).data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(stream);
}

Rgb readPng(const std::string& file) {
    std::FILE* stream = open(file, "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, stream);
    png_read_info(png, info);
    Rgb picture{png_get_image_width(png, info), png_get_image_height(png, info), {}};
    picture.samples.resize(size_t{3} * picture.width * picture.height);
    png_read_image(png, lines(picture).data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(stream);
    return picture;
}

}  // namespace vorn_bench
