#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

#include "base/Geometry.h"
#include "gpu/Types.h"
#include "render/StripGeometry.h"
#include "render/UniformFields.h"
#include "settings/NimbraConfig.h"
#include "settings/Palette.h"

namespace veloria {

#define VELORIA_UNIFORM(name) float name = 0;
#define VELORIA_STOPS(name) std::array<ColorStop, 4> name{};

/// The uniform block of the fluid step, read by every kernel but k_clear.
struct SimParams {
  VELORIA_SIM_PARAMS(VELORIA_UNIFORM, VELORIA_UNIFORM, VELORIA_STOPS)
};

static_assert(sizeof(SimParams) == 168);
static_assert(offsetof(SimParams, dt) == 8);
static_assert(offsetof(SimParams, curlOctaves) == 40);
static_assert(offsetof(SimParams, emitThreshold) == 68);
static_assert(offsetof(SimParams, ambient) == 72);
static_assert(offsetof(SimParams, pointerX) == 84);
static_assert(offsetof(SimParams, pointerMode) == 112);
static_assert(offsetof(SimParams, paletteSpread) == 116);
static_assert(offsetof(SimParams, palette) == 120);

/// The bytes of a kernel: the block, then the phases.
struct StepBlock {
  SimParams params;
  VELORIA_STEP_PHASES(VELORIA_UNIFORM)
};

static_assert(sizeof(StepBlock) == 176);

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

/// The bytes of the two passes: the block, then the phases of BandMotion.
struct BandBlock {
  RenderParams params;
  VELORIA_BAND_PHASES(VELORIA_UNIFORM)
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

#undef VELORIA_UNIFORM
#undef VELORIA_STOPS

/// A setting as a uniform: narrowed to 32 bits, 0 when it is not finite, held to a magnitude that no arithmetic in a
/// shader can turn into infinity by itself.
inline float uniformFloat(double value) {
  constexpr double limit = 1e9;
  if (!std::isfinite(value)) return 0.0F;
  return static_cast<float>(std::clamp(value, -limit, limit));
}

/// The shaders' time wraps to 0 after this many seconds of simulated time. Their noise repeats with the same period, so
/// nothing jumps; without the wrap, 32-bit time would move in visible steps after some days.
inline constexpr double timePeriod = 8192.0;

inline float wrappedTime(double simTime) {
  return uniformFloat(std::fmod(simTime, timePeriod));
}

/// Filling the uniform blocks. Settings that are not finite become 0.

/// The pointer as the renderer knows it.
struct PointerState {
  std::optional<Point> local;  ///< points from the view's top left corner, y down; absent when it is elsewhere
  Point velocity;              ///< points per 60 Hz frame in screen coordinates, y up
  bool inside = false;
};

/// The pointer over a view of `height` points whose picture is drawn upside down.
PointerState mirrored(PointerState pointer, double height);

/// The view's size in points: the drawable's over the backing scale; half the drawable if the geometry is unknown. At
/// least 1.
Extent viewSizeFor(gpu::Size drawable, const std::optional<StripGeometry>& geometry);

/// The fluid's block, but for the grid's size. `dtFrames` is scaled time in 60 Hz frames, `simTime` in seconds. The
/// config's palette must have four stops (std::logic_error otherwise).
SimParams makeSimParams(const NimbraConfig& config, double dtFrames, double simTime, const PointerState& pointer,
                        Extent viewSize);

/// The band's and composite's block, with the text mask off. `scene` is the drawable's size x the scene's scale,
/// `debugSolid` the value of NIMBRA_DEBUG_SOLID.
RenderParams makeRenderParams(const NimbraConfig& config, double simTime, Extent scene,
                              const std::optional<StripGeometry>& geometry, const PointerState& pointer,
                              float debugSolid);

/// `text` as a float; 0 if it is null, not a number, or not finite.
float debugSolidValue(const char* text);

}  // namespace veloria
