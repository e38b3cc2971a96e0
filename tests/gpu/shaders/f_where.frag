#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"

// The fragment's place, and half the number of its target's kind.
layout(constant_id = 2) const uint targetKind = 7u;
layout(set = 1, binding = 0, std140) uniform Block {
  scalar width, height;
} block;
layout(location = 0) out vec4 color;

void main() { color = vec4(gl_FragCoord.xy / vec2(block.width, block.height), float(targetKind) / 2.0, 1.0); }
