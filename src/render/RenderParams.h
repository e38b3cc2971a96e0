#pragma once

#include <array>
#include <cstddef>

#include "render/RenderFields.h"
#include "settings/Palette.h"

namespace veloria {

#define VELORIA_UNIFORM(name) float name = 0;
#define VELORIA_STOPS(name) std::array<ColorStop, 4> name{};

/// The uniform block of the band and composite passes.
struct RenderParams {
  VELORIA_RENDER_PARAMS(VELORIA_UNIFORM, VELORIA_UNIFORM, VELORIA_STOPS)
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
  VELORIA_BAND_PHASES(VELORIA_UNIFORM)
};

#undef VELORIA_UNIFORM
#undef VELORIA_STOPS

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
