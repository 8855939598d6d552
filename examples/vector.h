// Three numbers: a place, a direction or a colour.
#pragma once

#include <algorithm>
#include <cmath>

struct Vector {
    float x = 0, y = 0, z = 0;
};

inline Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vector operator*(Vector a, Vector b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
inline Vector operator*(Vector a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline float dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector normalized(Vector a) { return a * (1 / std::sqrt(dot(a, a))); }
inline Vector mixed(Vector a, Vector b, float t) { return a * (1 - t) + b * t; }

// 0 below `from`, 1 above `to`, smooth between.
inline float smoothStep(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}
