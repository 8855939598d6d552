// Mountains out of noise: the same on every run.
#pragma once

#include <vector>

#include "vector.h"

// Smooth noise of 0 to 1 in two dimensions, and octaves of it.
float noise(float x, float z);
float fractalNoise(float x, float z, int octaves);

// Heights over a square of ground, worked out once; the water lies at height 0.
class Terrain {
  public:
    Terrain();

    float height(float x, float z) const;
    Vector normal(float x, float z, float distance) const;

    // Distance along the ray to the ground, negative when it meets none.
    float hit(Vector origin, Vector direction, float farthest) const;

    // 1 in the light of the sun, 0 in the shadow of a mountain.
    float light(Vector place, Vector sun) const;

  private:
    std::vector<float> heights_;
};
