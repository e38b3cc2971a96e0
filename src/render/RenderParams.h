#pragma once

#include <array>
#include <cstddef>

#include "settings/Palette.h"

namespace veloria {

/// The uniform block of the band and composite passes: 64 floats without padding. The layout is a wire format;
/// shaders/RenderParams.glsl is its other side.
struct RenderParams {
  float targetW = 0;  ///< the scene's size in pixels
  float targetH = 0;
  float time = 0;  ///< seconds of scaled time, wrapped at timePeriod
  float one = 1;
  float zero0 = 0;
  float zero1 = 0;
  float exposure = 0;
  float opacity = 0;
  float contrast = 0;
  float saturation = 0;
  float hueShift = 0;
  float colorCycle = 0;
  float rayIntensity = 0;
  float raySharpness = 0;
  float rayScale = 0;
  float raySpeed = 0;
  float rayFlow = 0;
  float detailOctaves = 0;
  float glowAmount = 0;
  float glowRadius = 0;
  float notchLeft = 0;  ///< shares of the window's width; 0 in all six without a housing
  float notchRight = 0;
  float notchBottom = 0;  ///< share of the window's height, from the top
  float notchPresent = 0;
  float notchHalo = 0;
  float notchFeather = 0;
  float fadeTop = 0;
  float fadeBottom = 0;
  float fadeSide = 0;
  float pointerX = 0;  ///< shares of the window, y from the top; 0 in all five without a glowing pointer
  float pointerY = 0;
  float pointerGlow = 0;
  float pointerRadius = 0;
  float pointerGlowOn = 0;
  float shimmer = 0;
  float ambientLevel = 0;
  float heightTint = 0;
  float coverGain = 0;
  float additive = 0;
  std::array<ColorStop, 4> palette{};
  float textMaskOn = 0;
  float textThreshold = 0;
  float textSoftness = 0;
  float textDilate = 0;
  float textBlur = 0;
  float textShadow = 0;
  float textShadowSpread = 0;
  float opaque = 0;
  float backgroundLift = 0;
  float hueSpread = 0;
  float hueSpreadScale = 0;
  float hueSpreadDrift = 0;
  float debugSolid = 0;
};

static_assert(sizeof(RenderParams) == 256);
static_assert(offsetof(RenderParams, time) == 8);
static_assert(offsetof(RenderParams, exposure) == 24);
static_assert(offsetof(RenderParams, rayIntensity) == 48);
static_assert(offsetof(RenderParams, glowAmount) == 72);
static_assert(offsetof(RenderParams, notchLeft) == 80);
static_assert(offsetof(RenderParams, notchFeather) == 100);
static_assert(offsetof(RenderParams, fadeBottom) == 108);
static_assert(offsetof(RenderParams, pointerX) == 116);
static_assert(offsetof(RenderParams, pointerGlowOn) == 132);
static_assert(offsetof(RenderParams, shimmer) == 136);
static_assert(offsetof(RenderParams, additive) == 152);
static_assert(offsetof(RenderParams, palette) == 156);
static_assert(offsetof(RenderParams, textMaskOn) == 204);
static_assert(offsetof(RenderParams, opaque) == 232);
static_assert(offsetof(RenderParams, backgroundLift) == 236);
static_assert(offsetof(RenderParams, hueSpread) == 240);
static_assert(offsetof(RenderParams, debugSolid) == 252);

/// What the two passes are given: the block and, behind it, what BandMotion says.
struct BandBlock {
  RenderParams params;
  float rayPhase = 0;
  float hueDriftPhase = 0;
  float hueSwing = 0;  ///< turns
};
static_assert(sizeof(BandBlock) == 268);

/// The uniform block of the glow's blur.
struct BlurParams {
  float dirX = 0;
  float dirY = 0;
  float radius = 0;  ///< the setting glowRadius, at most maxGlowRadius
};
static_assert(sizeof(BlurParams) == 12);

inline constexpr double maxGlowRadius = 16;

}  // namespace veloria
