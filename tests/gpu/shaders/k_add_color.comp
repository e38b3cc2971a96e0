#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

layout(set = 0, binding = 4, rgba16f) uniform readonly image2D source;
layout(set = 0, binding = 7, rgba16f) uniform writeonly image2D sumOut;
layout(set = 1, binding = 0, std140) uniform Block {
  scalar red, green, blue, alpha;
} block;

void main() {
  ivec2 at = cell();
  if (outside(at, imageSize(sumOut))) return;
  imageStore(sumOut, at, imageLoad(source, at) + vec4(block.red, block.green, block.blue, block.alpha));
}
