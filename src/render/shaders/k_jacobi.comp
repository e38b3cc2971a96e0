#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// One Jacobi iteration of the pressure's Poisson equation. Outside the sides the pressure is 0 (open), beyond the walls
// it is the wall's own (no flow). Each iteration keeps a little less than all of it: the field is warm-started for
// ever, and a mean that drifts would eat the half floats' precision.
layout(set = 0, binding = 4, r16f) uniform readonly image2D pressure;
layout(set = 0, binding = 5, r16f) uniform readonly image2D divergence;
layout(set = 0, binding = 7, r16f) uniform writeonly image2D pressureOut;

const float keep = 0.2499;
const int reach = 1;  // rows above and below that it reads, and nothing beyond: the steps can go down the rows as a wave

void main() {
  ivec2 c = cell();
  ivec2 size = imageSize(pressureOut);
  if (outside(c, size)) return;
  ivec2 last = size - 1;
  float right = pick(c.x < last.x, imageLoad(pressure, ivec2(min(c.x + 1, last.x), c.y)).x, 0.0);
  float left = pick(c.x > 0, imageLoad(pressure, ivec2(max(c.x - 1, 0), c.y)).x, 0.0);
  float below = imageLoad(pressure, ivec2(c.x, min(c.y + 1, last.y))).x;
  float above = imageLoad(pressure, ivec2(c.x, max(c.y - 1, 0))).x;
  float p = (right + left + below + above - imageLoad(divergence, c).x) * keep;
  imageStore(pressureOut, c, vec4(bounded(p, 3e4), 0.0, 0.0, 0.0));
}
