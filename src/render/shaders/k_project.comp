#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// Subtracts the pressure's gradient, with the boundary values of the Jacobi pass.
layout(set = 0, binding = 4, rg16f) uniform readonly image2D velocity;
layout(set = 0, binding = 5, r16f) uniform readonly image2D pressure;
layout(set = 0, binding = 7, rg16f) uniform writeonly image2D velocityOut;

void main() {
  ivec2 c = cell();
  ivec2 size = imageSize(velocityOut);
  if (outside(c, size)) return;
  ivec2 last = size - 1;
  float right = pick(c.x < last.x, imageLoad(pressure, ivec2(min(c.x + 1, last.x), c.y)).x, 0.0);
  float left = pick(c.x > 0, imageLoad(pressure, ivec2(max(c.x - 1, 0), c.y)).x, 0.0);
  float below = imageLoad(pressure, ivec2(c.x, min(c.y + 1, last.y))).x;
  float above = imageLoad(pressure, ivec2(c.x, max(c.y - 1, 0))).x;
  vec2 v = imageLoad(velocity, c).xy - 0.5 * vec2(right - left, below - above);
  imageStore(velocityOut, c, vec4(bounded(v, 3e4), 0.0, 0.0));
}
