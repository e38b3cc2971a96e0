// What is in the uniform block of the fluid step: 42 floats without padding, a wire format, which SimParams.h and
// shaders/SimParams.glsl make of this list. `number` names a float, `setting` one that is the setting of the same name,
// `stops` four colours of three floats each.

// clang-format off
#define VELORIA_SIM_PARAMS(number, setting, stops) \
  number(gridW) number(gridH)  /* cells; written by FluidSim::step */ \
  number(dt)                   /* 60 Hz frames of scaled time */ \
  number(time)                 /* seconds of scaled time, wrapped at timePeriod */ \
  setting(velDissipation) setting(dyeDissipation) setting(vorticity) \
  setting(curlStrength) setting(curlScale) setting(curlSpeed) \
  number(curlOctaves) \
  setting(buoyancy) \
  setting(emitRate) setting(emitScale) setting(emitSpeed) setting(emitHeight) setting(emitCenter) \
  setting(emitThreshold) \
  number(ambient) \
  setting(flowSpeed) setting(flowShear) \
  number(pointerX)   /* 0 to 1 across the view */ \
  number(pointerY)   /* 0 at the bottom, 1 at the top */ \
  number(pointerDX)  /* view widths per 60 Hz frame */ \
  number(pointerDY)  /* view heights per 60 Hz frame, positive downwards */ \
  number(pointerRadius) number(pointerStrength) number(pointerActive) \
  number(pointerMode)  /* 1 push, 2 vortex, 3 calm */ \
  setting(paletteSpread) \
  stops(palette)

// What follows the block: the phases that FluidSim keeps, in lattice steps from 0 to below stepPeriod (MotionPhases.h).
#define VELORIA_STEP_PHASES(number) \
  number(curlPhase) number(emitPhase)
// clang-format on
