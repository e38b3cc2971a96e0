#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// Takes long enough to be overtaken by whoever does not wait for it.
layout(set = 0, binding = 7, r16f) uniform writeonly image2D slowOut;
layout(set = 1, binding = 0, std140) uniform Block {
  scalar rounds, value;
} block;

void main() {
  ivec2 at = cell();
  if (outside(at, imageSize(slowOut))) return;
  float x = 0.5;
  for (scalar round = 0.0; round < block.rounds; ++round) x = fract(sin(x + float(at.x)) * 43.0);
  imageStore(slowOut, at, vec4(pick(x == 0.123456, -1.0, block.value)));
}
