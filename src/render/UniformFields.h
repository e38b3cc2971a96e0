// The fields of the uniform blocks: floats without padding, a wire format. Uniforms.h turns these lists into C++
// structures, shaders/SimParams.glsl and shaders/RenderParams.glsl into the blocks of the shaders. `number` names a
// float, `setting` one that is the setting of the same name, `stops` four colours of three floats each.

// clang-format off
// The fluid step: 42 floats.
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

// The band and composite passes: 64 floats.
#define VELORIA_RENDER_PARAMS(number, setting, stops) \
  number(targetW) number(targetH)  /* the scene's size in pixels */ \
  number(time)                     /* seconds of scaled time, wrapped at timePeriod */ \
  number(one) number(zero0) number(zero1) \
  setting(exposure) setting(opacity) setting(contrast) setting(saturation) setting(hueShift) setting(colorCycle) \
  setting(rayIntensity) setting(raySharpness) setting(rayScale) setting(raySpeed) setting(rayFlow) \
  number(detailOctaves) \
  setting(glowAmount) \
  number(glowRadius) \
  number(notchLeft) number(notchRight)  /* shares of the window's width; 0 in all six without a housing */ \
  number(notchBottom)                   /* share of the window's height, from the top */ \
  number(notchPresent) number(notchHalo) number(notchFeather) \
  setting(fadeTop) \
  number(fadeBottom) \
  setting(fadeSide) \
  number(pointerX) number(pointerY)  /* shares of the window, y from the top */ \
  number(pointerGlow) number(pointerRadius) number(pointerGlowOn)  /* 0 in all five without a glowing pointer */ \
  setting(shimmer) setting(ambientLevel) setting(heightTint) setting(coverGain) setting(additive) \
  stops(palette) \
  number(textMaskOn) \
  setting(textThreshold) setting(textSoftness) setting(textDilate) setting(textBlur) setting(textShadow) \
  setting(textShadowSpread) \
  number(opaque) \
  setting(backgroundLift) setting(hueSpread) setting(hueSpreadScale) setting(hueSpreadDrift) \
  number(debugSolid)

// What follows the block; see MotionPhases.h.
#define VELORIA_BAND_PHASES(number) \
  number(rayPhase)       /* raySpeed x seconds, 0 to below rayPeriod */ \
  number(hueDriftPhase)  /* lattice steps, 0 to below stepPeriod */ \
  number(hueSwing)       /* turns */
// clang-format on
