#pragma once

#include <array>
#include <cstddef>

#include "settings/Palette.h"

namespace veloria {

/// The uniform block of the fluid step: 42 floats without padding, read by every kernel but k_clear. The layout is a
/// wire format; shaders/SimParams.glsl is its other side.
struct SimParams {
  float gridW = 0;  ///< cells; written by FluidSim::step
  float gridH = 0;
  float dt = 0;    ///< 60 Hz frames of scaled time
  float time = 0;  ///< seconds of scaled time, wrapped at timePeriod
  float velDissipation = 0;
  float dyeDissipation = 0;
  float vorticity = 0;
  float curlStrength = 0;
  float curlScale = 0;
  float curlSpeed = 0;
  float curlOctaves = 0;
  float buoyancy = 0;
  float emitRate = 0;
  float emitScale = 0;
  float emitSpeed = 0;
  float emitHeight = 0;
  float emitCenter = 0;
  float emitThreshold = 0;
  float ambient = 0;
  float flowSpeed = 0;
  float flowShear = 0;
  float pointerX = 0;   ///< 0 to 1 across the view
  float pointerY = 0;   ///< 0 at the bottom, 1 at the top
  float pointerDX = 0;  ///< view widths per 60 Hz frame
  float pointerDY = 0;  ///< view heights per 60 Hz frame, positive downwards
  float pointerRadius = 0;
  float pointerStrength = 0;
  float pointerActive = 0;
  float pointerMode = 0;  ///< 1 push, 2 vortex, 3 calm
  float paletteSpread = 0;
  std::array<ColorStop, 4> palette{};
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

/// What a kernel is given: the block and, behind it, the phases that FluidSim keeps, in lattice steps from 0 to below
/// stepPeriod (MotionPhases.h).
struct StepBlock {
  SimParams params;
  float curlPhase = 0;
  float emitPhase = 0;
};
static_assert(sizeof(StepBlock) == 176);

}  // namespace veloria
