#include "terrain.h"

#include <cstdint>
#include <thread>

namespace {

constexpr int kCells = 2048;
constexpr float kSide = 64;  // the ground reaches from -32 to 32
constexpr float kPerUnit = kCells / kSide;
constexpr float kHighest = 4.6F;

float random(int32_t x, int32_t z) {
    uint32_t h = static_cast<uint32_t>(x) * 0x8DA6B343u ^ static_cast<uint32_t>(z) * 0xD8163841u;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    return static_cast<float>((h ^ h >> 15) >> 8) / 16777216.0F;
}

// Sharp crests and wide valleys.
float ridges(float x, float z) {
    float sum = 0;
    float weight = 1;
    float scale = 1;
    for (int octave = 0; octave < 10; ++octave) {
        const float crest = 1 - std::abs(2 * noise(x * scale + 17.0F, z * scale - 9.0F) - 1);
        sum += crest * crest * weight / scale;
        weight = std::clamp(crest * crest * 1.6F, 0.0F, 1.0F);
        scale *= 2.03F;
    }
    return sum / 2;
}

float groundHeight(float x, float z) {
    const float range =
        ridges(x * 0.16F, z * 0.16F) * (0.55F + 0.45F * noise(x * 0.07F, z * 0.07F));
    const float lake = smoothStep(3.0F, 15.0F, std::hypot(x * 0.75F + 0.6F, z - 7.0F));
    const float shore = 0.5F * fractalNoise(x * 0.35F, z * 0.35F, 6) - 0.42F;
    return shore + lake * range * kHighest - (1 - lake) * 0.35F;
}

}  // namespace

float noise(float x, float z) {
    const float fx = std::floor(x);
    const float fz = std::floor(z);
    const auto ix = static_cast<int32_t>(fx);
    const auto iz = static_cast<int32_t>(fz);
    const float u = smoothStep(0, 1, x - fx);
    const float v = smoothStep(0, 1, z - fz);
    const float near = std::lerp(random(ix, iz), random(ix + 1, iz), u);
    const float far = std::lerp(random(ix, iz + 1), random(ix + 1, iz + 1), u);
    return std::lerp(near, far, v);
}

float fractalNoise(float x, float z, int octaves) {
    float sum = 0;
    float size = 0.5F;
    for (int i = 0; i < octaves; ++i) {
        sum += size * noise(x, z);
        // Turned a little from octave to octave, so that no grid shows.
        const float turned = 1.6F * x - 1.2F * z;
        z = 1.2F * x + 1.6F * z;
        x = turned;
        size /= 2;
    }
    return sum;
}

Terrain::Terrain() : heights_(size_t{kCells} * kCells) {
    const auto fill = [this](int from, int to) {
        for (int row = from; row < to; ++row) {
            for (int column = 0; column < kCells; ++column) {
                const float x = static_cast<float>(column) / kPerUnit - kSide / 2;
                const float z = static_cast<float>(row) / kPerUnit - kSide / 2;
                heights_[static_cast<size_t>(row) * kCells + static_cast<size_t>(column)] =
                    groundHeight(x, z);
            }
        }
    };
    std::thread half(fill, 0, kCells / 2);
    fill(kCells / 2, kCells);
    half.join();
}

float Terrain::height(float x, float z) const {
    const float column = std::clamp((x + kSide / 2) * kPerUnit, 0.0F, kCells - 1.01F);
    const float row = std::clamp((z + kSide / 2) * kPerUnit, 0.0F, kCells - 1.01F);
    const auto c = static_cast<size_t>(column);
    const auto r = static_cast<size_t>(row);
    const float u = column - static_cast<float>(c);
    const float v = row - static_cast<float>(r);
    const float* const cell = &heights_[r * kCells + c];
    return std::lerp(std::lerp(cell[0], cell[1], u), std::lerp(cell[kCells], cell[kCells + 1], u),
                     v);
}

Vector Terrain::normal(float x, float z, float distance) const {
    const float e = std::max(0.03F, 0.003F * distance);
    return normalized(
        {height(x - e, z) - height(x + e, z), 2 * e, height(x, z - e) - height(x, z + e)});
}

float Terrain::hit(Vector origin, Vector direction, float farthest) const {
    float t = 0.02F;
    while (t < farthest) {
        const Vector place = origin + direction * t;
        const float above = place.y - height(place.x, place.z);
        if (above < 0.0008F * t) {
            return t;
        }
        if (place.y > kHighest && direction.y > 0) {
            return -1;
        }
        t += std::max(0.35F * above, 0.0015F * t);
    }
    return -1;
}

float Terrain::light(Vector place, Vector sun) const {
    float light = 1;
    for (float t = 0.06F; t < 14 && light > 0; t *= 1.12F) {
        const Vector point = place + sun * t;
        light = std::min(light, 0.5F + 9 * (point.y - height(point.x, point.z)) / t);
    }
    return std::clamp(light, 0.0F, 1.0F);
}
