#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "RenderParams.glsl"
#include "color.glsl"

// Finds the bar's own text in its picture. Needed again only when the picture or a setting changes.
layout(set = 0, binding = 0) uniform sampler2D bar;

layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 mask;

float barLuminance(vec2 at) {
  vec4 c = textureLod(bar, at, 0.0);
  return luminance(c.rgb) + (1.0 - c.a) * 0.5;
}

vec2 eighthTurn(vec2 v) { return vec2(v.x - v.y, v.x + v.y) * 0.70710678; }

// The ground's luminance on a ring of eight places around, `to` (pixels) being the first. The two that differ most count
// for nothing: a stroke of text that the ring happens to cross.
float ringMean(vec2 to) {
  vec2 pixel = 1.0 / vec2(textureSize(bar, 0));
  float sum = 0.0;
  float low = 1e4;
  float high = -1e4;
  for (int i = 0; i < 8; ++i) {
    float c = barLuminance(uv + to * pixel);
    sum += c;
    low = min(low, c);
    high = max(high, c);
    to = eighthTurn(to);
  }
  return (sum - low - high) / 6.0;
}

// x: how much of the bar's own text is here (0 to 1). y: how near text is, for its shadow.
vec2 textMask() {
  vec2 pixel = 1.0 / vec2(textureSize(bar, 0));
  float blur = clamp(params.textBlur, 1.0, 32.0);
  float nearGround = ringMean(vec2(blur, 0.0));
  float farGround = ringMean(vec2(1.386, 0.574) * blur);
  float dilate = clamp(params.textDilate, 0.0, 16.0) * 0.5;
  float spread = clamp(params.textShadowSpread, 0.0, 32.0);
  float strongest = 0.0;
  float around = 0.0;
  vec2 to = vec2(1.0, 0.0);
  for (int i = 0; i < 24; ++i) {
    float radius = i < 8 ? 0.35 * dilate : (i < 16 ? dilate : spread);
    // Text stands out from both grounds; a place with one wrong ground does not.
    float c = barLuminance(uv + to * radius * pixel);
    float stroke = min(abs(c - nearGround), abs(c - farGround));
    strongest = max(strongest, i < 16 ? stroke : 0.0);
    around += i < 16 ? 0.0 : stroke;
    to = eighthTurn(to);
  }
  float soft = max(params.textSoftness, 1e-3);
  return vec2(smoothstep(params.textThreshold, params.textThreshold + soft, strongest),
              smoothstep(0.0, params.textThreshold + soft, around * 0.25));
}

void main() { mask = vec4(textMask(), 0.0, 1.0); }
