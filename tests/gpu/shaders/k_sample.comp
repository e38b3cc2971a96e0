#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// Samples at a point given in texture coordinates.
layout(set = 0, binding = 0) uniform sampler2D source;
layout(set = 0, binding = 7, rgba16f) uniform writeonly image2D sampleOut;
layout(set = 1, binding = 0, std140) uniform Block {
  scalar x, y;
} block;

void main() {
  ivec2 at = cell();
  if (outside(at, imageSize(sampleOut))) return;
  imageStore(sampleOut, at, textureLod(source, vec2(block.x, block.y), 0.0));
}
