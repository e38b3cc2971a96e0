#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

layout(set = 0, binding = 4, r16f) uniform readonly image2D source;
layout(set = 0, binding = 7, r16f) uniform writeonly image2D sumOut;
layout(set = 1, binding = 0, std140) uniform Block {
  scalar amount;
} block;

void main() {
  ivec2 at = cell();
  ivec2 size = imageSize(sumOut);
  if (outside(at, size)) return;
  // Reads the opposite corner, so that it depends on what other groups wrote.
  imageStore(sumOut, at, imageLoad(source, size - 1 - at) + block.amount);
}
