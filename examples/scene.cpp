#include "scene.h"

#include <array>
#include <atomic>
#include <thread>

#include "terrain.h"

namespace {

constexpr float kFarthest = 45;
constexpr Vector kEye = {-0.3F, 0.60F, 13.6F};
constexpr Vector kSunColor = {1.0F, 0.62F, 0.32F};

const Vector kSun = normalized({0.32F, 0.17F, -1.0F});

Vector sky(Vector direction) {
    const float up = std::max(direction.y, 0.0F);
    Vector color = mixed({0.98F, 0.58F, 0.36F}, {0.52F, 0.46F, 0.62F}, smoothStep(0, 0.16F, up));
    color = mixed(color, {0.10F, 0.17F, 0.38F}, smoothStep(0.06F, 0.6F, up));
    const float toSun = std::max(dot(direction, kSun), 0.0F);
    color = color + kSunColor * (0.55F * std::pow(toSun, 14.0F) + 0.7F * std::pow(toSun, 180.0F));
    const float far = 1.4F / (up + 0.08F);
    const float cloud = fractalNoise(direction.x * far * 1.1F + 3.0F, direction.z * far * 2.0F, 7);
    const Vector lit = mixed({0.62F, 0.42F, 0.48F}, {1.35F, 0.78F, 0.46F}, std::pow(toSun, 3.0F));
    const float cover = smoothStep(0.46F, 0.74F, cloud) * smoothStep(0.015F, 0.14F, up);
    color = mixed(color, lit, 0.85F * cover);
    return color + kSunColor * (6.0F * smoothStep(0.99955F, 0.9998F, toSun) * (1 - 0.7F * cover));
}

Vector inHaze(Vector color, Vector direction, float distance) {
    const float haze = 1 - std::exp(-std::pow(distance * 0.021F, 1.8F));
    const float toSun = std::max(dot(direction, kSun), 0.0F);
    const Vector air =
        mixed({0.50F, 0.46F, 0.60F}, {1.15F, 0.68F, 0.42F}, 0.9F * std::pow(toSun, 5.0F));
    return mixed(color, air, haze);
}

Vector groundColor(Vector place, Vector normal) {
    const float grain = 0.6F * fractalNoise(place.x * 9, place.z * 9, 5) +
                        0.4F * noise(place.x * 140, place.z * 60);
    Vector color = mixed({0.20F, 0.165F, 0.15F}, {0.33F, 0.27F, 0.24F}, grain);
    const float meadow = smoothStep(0.62F, 0.86F, normal.y) * smoothStep(1.5F, 0.35F, place.y);
    color = mixed(color, mixed({0.055F, 0.10F, 0.025F}, {0.25F, 0.25F, 0.07F}, grain), meadow);
    const float snowLine = 1.35F + 0.9F * (fractalNoise(place.x * 1.3F, place.z * 1.3F, 4) - 0.5F);
    const float snow =
        smoothStep(snowLine, snowLine + 0.5F, place.y) * smoothStep(0.42F, 0.68F, normal.y);
    color = mixed(color, {0.90F, 0.91F, 0.96F}, snow);
    return mixed(color, {0.36F, 0.30F, 0.22F}, smoothStep(0.07F, 0.02F, place.y));
}

Vector ground(const Terrain& terrain, Vector place, Vector direction, float distance) {
    const Vector normal = terrain.normal(place.x, place.z, distance);
    const float sun = std::max(dot(normal, kSun), 0.0F) * terrain.light(place, kSun);
    const float back = std::max(dot(normal, normalized({-kSun.x, 0.4F, -kSun.z})), 0.0F);
    const Vector light = kSunColor * (3.0F * sun) +
                         Vector{0.30F, 0.36F, 0.56F} * (0.35F + 0.65F * normal.y) +
                         Vector{0.34F, 0.26F, 0.30F} * (0.55F * back);
    return inHaze(groundColor(place, normal) * light, direction, distance);
}

Vector landOrSky(const Terrain& terrain, Vector origin, Vector direction, float sofar) {
    const float t = terrain.hit(origin, direction, kFarthest);
    if (t < 0) {
        return sky(direction);
    }
    return ground(terrain, origin + direction * t, direction, sofar + t);
}

// Ripples, finer and weaker the farther away they are.
Vector waterNormal(Vector place, float distance) {
    const float strength = 0.055F / (1 + 0.22F * distance);
    const float a = fractalNoise(place.x * 5, place.z * 14, 4) - 0.5F;
    const float b = fractalNoise(place.x * 5 + 40, place.z * 14 - 25, 4) - 0.5F;
    return normalized({strength * a, 1, 2 * strength * b});
}

Vector water(const Terrain& terrain, Vector place, Vector direction, float distance) {
    const Vector normal = waterNormal(place, distance);
    Vector mirrored = direction - normal * (2 * dot(direction, normal));
    mirrored.y = std::max(mirrored.y, 0.004F);
    mirrored = normalized(mirrored);
    const float facing = std::clamp(-dot(direction, normal), 0.0F, 1.0F);
    const float share = 0.06F + 0.90F * std::pow(1 - facing, 4.0F);
    const float depth = -terrain.height(place.x, place.z);
    const Vector body =
        mixed({0.16F, 0.17F, 0.15F}, {0.02F, 0.055F, 0.08F}, smoothStep(0.0F, 0.25F, depth));
    const Vector mirror = landOrSky(terrain, place, mirrored, distance);
    return inHaze(mixed(body, mirror, share), direction, distance * 0.6F);
}

Vector look(const Terrain& terrain, Vector direction) {
    const float toWater = direction.y < 0 ? -kEye.y / direction.y : kFarthest;
    const float toGround = terrain.hit(kEye, direction, std::min(toWater, kFarthest));
    if (toGround > 0) {
        return ground(terrain, kEye + direction * toGround, direction, toGround);
    }
    if (toWater < kFarthest) {
        return water(terrain, kEye + direction * toWater, direction, toWater);
    }
    return sky(direction);
}

uint8_t developed(float light) {
    const float film = 1 - std::exp(-1.25F * light);
    return static_cast<uint8_t>(255 * std::pow(std::clamp(film, 0.0F, 1.0F), 1 / 1.55F) + 0.5F);
}

// Four rays a pixel.
void paintPixel(const Terrain& terrain, int width, int height, int x, int y, uint8_t* pixel) {
    constexpr std::array<std::array<float, 2>, 4> kPlaces = {
        {{0.125F, 0.375F}, {0.375F, 0.875F}, {0.625F, 0.125F}, {0.875F, 0.625F}}};
    Vector sum;
    for (const auto& [dx, dy] : kPlaces) {
        const float right = (2 * (static_cast<float>(x) + dx) - static_cast<float>(width)) /
                            static_cast<float>(height);
        const float up = 1 - 2 * (static_cast<float>(y) + dy) / static_cast<float>(height);
        sum = sum + look(terrain, normalized({right * 0.62F, up * 0.62F + 0.115F, -1}));
    }
    const Vector color = sum * 0.25F;
    pixel[0] = developed(color.x);
    pixel[1] = developed(color.y);
    pixel[2] = developed(color.z);
}

}  // namespace

std::vector<uint8_t> paintScene(int width, int height) {
    const Terrain terrain;
    const auto lineBytes = static_cast<size_t>(width) * 3;
    std::vector<uint8_t> pixels(lineBytes * static_cast<size_t>(height));
    std::atomic<int> next = 0;
    const auto paint = [&] {
        for (int y = next++; y < height; y = next++) {
            uint8_t* line = pixels.data() + lineBytes * static_cast<size_t>(y);
            for (int x = 0; x < width; ++x, line += 3) {
                paintPixel(terrain, width, height, x, y, line);
            }
        }
    };
    std::vector<std::thread> painters(std::max(1U, std::thread::hardware_concurrency()) - 1);
    for (std::thread& painter : painters) {
        painter = std::thread(paint);
    }
    paint();
    for (std::thread& painter : painters) {
        painter.join();
    }
    return pixels;
}
