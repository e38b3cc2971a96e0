#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// Divergence by central differences. The band is open at its sides and closed above and below: the row beyond a wall
// mirrors the vertical velocity, so nothing flows through.
layout(set = 0, binding = 4, rg16f) uniform readonly image2D velocity;
layout(set = 0, binding = 7, r16f) uniform writeonly image2D divergence;

void main() {
  ivec2 c = cell();
  ivec2 size = imageSize(divergence);
  if (outside(c, size)) return;
  ivec2 last = size - 1;
  float right = imageLoad(velocity, ivec2(min(c.x + 1, last.x), c.y)).x;
  float left = imageLoad(velocity, ivec2(max(c.x - 1, 0), c.y)).x;
  float below = imageLoad(velocity, ivec2(c.x, min(c.y + 1, last.y))).y;
  float above = imageLoad(velocity, ivec2(c.x, max(c.y - 1, 0))).y;
  below = pick(c.y == last.y, -below, below);
  above = pick(c.y == 0, -above, above);
  imageStore(divergence, c, vec4(0.5 * ((right - left) + (below - above)), 0.0, 0.0, 0.0));
}
