// What is in the uniform block of the band and composite passes: 64 floats without padding, a wire format, which
// RenderParams.h and shaders/RenderParams.glsl make of this list. `number` names a float, `setting` one that is the
// setting of the same name, `stops` four colours of three floats each.

// clang-format off
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
