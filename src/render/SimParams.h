#pragma once

#include <array>
#include <cstddef>

#include "render/SimFields.h"
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

/// What a kernel is given: the block and, behind it, the phases.
struct StepBlock {
  SimParams params;
  VELORIA_STEP_PHASES(VELORIA_UNIFORM)
};

#undef VELORIA_UNIFORM
#undef VELORIA_STOPS

static_assert(sizeof(StepBlock) == 176);

}  // namespace veloria
