#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"

// A Gaussian along one direction. Between two taps lies a bilinear one that weighs both.
layout(set = 0, binding = 0) uniform sampler2D source;
layout(set = 1, binding = 0, std140) uniform BlurParams {
  scalar dirX, dirY;
  scalar radius;
} blur;
layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 blurred;

void main() {
  vec2 along = vec2(blur.dirX, blur.dirY) / vec2(textureSize(source, 0));
  scalar sigma = clamp(blur.radius, 0.1, 16.0) * 1.5;
  int pairs = int(ceil(sigma * 1.25));
  scalar scale = -0.5 / (sigma * sigma);
  vec4 sum = textureLod(source, uv, 0.0);
  scalar total = 1.0;
  for (int i = 0; i < pairs; ++i) {
    scalar near = float(2 * i + 1);
    scalar far = near + 1.0;
    scalar nearWeight = exp(near * near * scale);
    scalar farWeight = exp(far * far * scale);
    scalar weight = nearWeight + farWeight;
    vec2 offset = along * (near + farWeight / weight);
    sum += weight * (textureLod(source, uv + offset, 0.0) + textureLod(source, uv - offset, 0.0));
    total += 2.0 * weight;
  }
  blurred = sum / total;
}
