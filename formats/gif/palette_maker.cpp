#include "formats/gif/palette_maker.h"

#include <gif_lib.h>

#include <unordered_map>

#include "formats/common/failure.h"

namespace gif {
namespace {

constexpr size_t kMostEntries = 256;
constexpr uint8_t kVisibleFrom = 128;

struct Color {
    uint8_t red, green, blue;
    bool visible;
};

Color colorOf(const uint8_t* pixel, size_t channels) {
    const size_t colors = channels < 3 ? 1 : 3;
    return {pixel[0], pixel[colors / 2], pixel[colors - 1],
            channels % 2 == 1 || pixel[channels - 1] >= kVisibleFrom};
}

// False when there are too many colours.
bool keepColors(const std::vector<uint8_t>& samples, size_t channels, IndexedPicture& picture) {
    std::unordered_map<uint32_t, uint8_t> entries;
    for (size_t i = 0; i < samples.size(); i += channels) {
        const Color color = colorOf(&samples[i], channels);
        const uint32_t key = color.visible
                                 ? static_cast<uint32_t>(color.red) << 16 |
                                       static_cast<uint32_t>(color.green) << 8 | color.blue
                                 : 1u << 24;
        const auto entry = static_cast<uint8_t>(entries.size());
        const auto [found, isNew] = entries.try_emplace(key, entry);
        if (isNew && entries.size() > kMostEntries) return false;
        if (isNew) picture.rgb.insert(picture.rgb.end(), {color.red, color.green, color.blue});
        if (isNew && !color.visible) picture.transparent = entry;
        picture.indices.push_back(found->second);
    }
    return true;
}

void chooseColors(const std::vector<uint8_t>& samples,
                  size_t channels,
                  size_t width,
                  size_t height,
                  IndexedPicture& picture) {
    const size_t pixels = width * height;
    std::vector<uint8_t> planes[3];
    bool seeThrough = false;
    for (std::vector<uint8_t>& plane : planes) plane.reserve(pixels);
    for (size_t i = 0; i < samples.size(); i += channels) {
        const Color color = colorOf(&samples[i], channels);
        planes[0].push_back(color.red);
        planes[1].push_back(color.green);
        planes[2].push_back(color.blue);
        seeThrough = seeThrough || !color.visible;
    }
    int count = seeThrough ? kMostEntries - 1 : kMostEntries;
    GifColorType colors[kMostEntries] = {};
    picture.indices.resize(pixels);
    if (GifQuantizeBuffer(static_cast<unsigned>(width), static_cast<unsigned>(height), &count,
                          planes[0].data(), planes[1].data(), planes[2].data(),
                          picture.indices.data(), colors) != GIF_OK)
        throw formats::Failure{formats::kOutOfMemory};
    for (int i = 0; i < count; ++i)
        picture.rgb.insert(picture.rgb.end(), {colors[i].Red, colors[i].Green, colors[i].Blue});
    if (!seeThrough) return;
    picture.transparent = count;
    picture.rgb.insert(picture.rgb.end(), 3, uint8_t{0});
    for (size_t i = 0; i < pixels; ++i) {
        if (!colorOf(&samples[i * channels], channels).visible)
            picture.indices[i] = static_cast<uint8_t>(count);
    }
}

}  // namespace

IndexedPicture indexedPicture(const std::vector<uint8_t>& samples,
                              size_t channels,
                              size_t width,
                              size_t height) {
    IndexedPicture picture;
    picture.indices.reserve(width * height);
    if (keepColors(samples, channels, picture)) return picture;
    picture = IndexedPicture();
    chooseColors(samples, channels, width, height, picture);
    return picture;
}

}  // namespace gif
