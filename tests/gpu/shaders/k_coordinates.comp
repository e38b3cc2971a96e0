#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "kernel.glsl"

// Writes where it is, also beyond the target if the last groups reach there: such writes must be lost.
layout(set = 0, binding = 7, rg16f) uniform writeonly image2D place;

void main() { imageStore(place, cell(), vec4(vec2(cell()), 0.0, 0.0)); }
