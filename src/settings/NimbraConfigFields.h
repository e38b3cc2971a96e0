// Every field of the settings record, in the order in which they are stored. Define the macros that you need and
// include this file; the others expand to nothing. VELORIA_FIELD(type, name, default, group)              each field;
// the name is also its key in the file VELORIA_NUMBER(type, name, default, group, low, high)  each number, with the
// range that the settings window offers VELORIA_KEYWORD(name, low, high, keyword)              each number that scripts
// drive, with the range they keep to

#ifndef VELORIA_FIELD
#define VELORIA_FIELD(type, name, initial, group)
#endif
#ifndef VELORIA_NUMBER
#define VELORIA_NUMBER(type, name, initial, group, low, high) VELORIA_FIELD(type, name, initial, group)
#endif
#ifndef VELORIA_KEYWORD
#define VELORIA_KEYWORD(name, low, high, keyword)
#endif
// A number with one range for both.
#define VELORIA_PARAMETER(name, initial, group, low, high, keyword) \
  VELORIA_NUMBER(double, name, initial, group, low, high)           \
  VELORIA_KEYWORD(name, low, high, keyword)

// placement
VELORIA_FIELD(bool, enabled, true, placement)
VELORIA_NUMBER(std::int64_t, framesPerSecond, 60, placement, 1, 240)
VELORIA_FIELD(bool, pauseInFullScreen, true, placement)
VELORIA_FIELD(bool, pauseOnBattery, false, placement)
VELORIA_FIELD(bool, allDisplays, false, placement)
VELORIA_FIELD(bool, hdrGlow, true, placement)
VELORIA_FIELD(LayerMode, layerMode, LayerMode::desktopStrip, placement)
VELORIA_NUMBER(double, extraHeight, 0.0, placement, 0, 400)
VELORIA_NUMBER(double, fadeTop, 0.0, placement, 0, 1)
VELORIA_NUMBER(double, fadeBottom, 0.35, placement, 0, 1)
VELORIA_NUMBER(double, fadeSide, 0.015, placement, 0, 0.5)

// drive
VELORIA_FIELD(Visualizer, visualizer, Visualizer::autonomous, drive)
VELORIA_FIELD(std::string, customScript, "", drive)
VELORIA_FIELD(bool, matchWallpaper, false, drive)
VELORIA_NUMBER(double, weatherLatitude, 39.7392, drive, -90, 90)
VELORIA_NUMBER(double, weatherLongitude, -104.9903, drive, -180, 180)

// text
VELORIA_FIELD(bool, preserveMenuBarText, false, text)
VELORIA_NUMBER(double, textThreshold, 0.055, text, 0, 0.5)
VELORIA_NUMBER(double, textSoftness, 0.09, text, 0, 0.5)
VELORIA_NUMBER(double, textDilate, 2.2, text, 0, 8)
VELORIA_NUMBER(double, textBlur, 7.0, text, 1, 32)
VELORIA_FIELD(bool, opaqueBackground, true, text)
VELORIA_NUMBER(double, backgroundLift, 0.1, text, 0, 1)
VELORIA_NUMBER(double, textShadow, 0.0, text, 0, 1)
VELORIA_NUMBER(double, textShadowSpread, 5.0, text, 0, 32)

// notch
VELORIA_FIELD(NotchMode, notchMode, NotchMode::mask, notch)
VELORIA_NUMBER(double, notchFeather, 0.014, notch, 0, 0.1)
VELORIA_NUMBER(double, notchPadding, 0.0, notch, 0, 20)

// palette
VELORIA_FIELD(std::string, paletteName, "Classic Nimbra", palette)
VELORIA_FIELD(std::optional<Palette>, customPalette, std::nullopt, palette)

// look
VELORIA_PARAMETER(opacity, 0.85, look, 0, 1, opacity)
VELORIA_PARAMETER(exposure, 1.25, look, 0, 6, exposure)
VELORIA_PARAMETER(contrast, 0.95, look, 0.1, 3, contrast)
VELORIA_PARAMETER(saturation, 1.4, look, 0, 3, saturation)
VELORIA_PARAMETER(hueShift, 0.0, look, 0, 1, hue)
// A script may also turn the hue backwards, and twice as fast.
VELORIA_NUMBER(double, colorCycle, 0.0003, look, 0, 0.1)
VELORIA_KEYWORD(colorCycle, -0.2, 0.2, cycle)
VELORIA_PARAMETER(heightTint, 0.28, look, 0, 1, tint)
VELORIA_PARAMETER(hueSpread, 0.2, look, 0, 0.5, huespread)
VELORIA_NUMBER(double, hueSpreadScale, 2.6, look, 0.2, 8)
VELORIA_NUMBER(double, hueSpreadDrift, 0.005, look, 0, 0.1)
VELORIA_NUMBER(double, additive, 0.0, look, 0, 1)
VELORIA_NUMBER(double, coverGain, 1.0, look, 0, 4)
VELORIA_PARAMETER(glowAmount, 0.8, look, 0, 4, glow)
VELORIA_PARAMETER(glowRadius, 1.6, look, 0.2, 6, glowspread)
VELORIA_PARAMETER(ambientLevel, 0.035, look, 0, 0.4, ambient)
VELORIA_PARAMETER(rayIntensity, 0.5, look, 0, 1, rays)
VELORIA_PARAMETER(raySharpness, 1.1, look, 0.1, 6, raysharp)
VELORIA_PARAMETER(rayScale, 4.2, look, 0.5, 30, rayscale)
VELORIA_PARAMETER(raySpeed, 0.004, look, 0, 1, rayspeed)
VELORIA_PARAMETER(rayFlow, 0.02, look, 0, 0.5, rayflow)
VELORIA_PARAMETER(shimmer, 0.015, look, 0, 2, shimmer)
VELORIA_NUMBER(std::int64_t, detailOctaves, 3, look, 1, 8)

// resolution
VELORIA_PARAMETER(tempo, 1.0, resolution, 0.15, 2.5, tempo)
VELORIA_NUMBER(double, quality, 1.0, resolution, 0.25, 2)
VELORIA_NUMBER(double, verticalStretch, 4.0, resolution, 1, 8)
VELORIA_NUMBER(std::int64_t, pressureIterations, 24, resolution, 1, 100)

// fluid
VELORIA_PARAMETER(timeScale, 0.18, fluid, 0.02, 4, speed)
VELORIA_NUMBER(double, velDissipation, 0.995, fluid, 0.9, 0.9999)
VELORIA_PARAMETER(dyeDissipation, 0.9965, fluid, 0.9, 0.9999, fade)
VELORIA_PARAMETER(vorticity, 0.38, fluid, 0, 6, vorticity)
VELORIA_PARAMETER(curlStrength, 0.75, fluid, 0, 10, curl)
VELORIA_PARAMETER(curlScale, 2.4, fluid, 0.2, 12, curlscale)
VELORIA_NUMBER(double, curlSpeed, 0.011, fluid, 0, 0.5)
VELORIA_NUMBER(std::int64_t, curlOctaves, 3, fluid, 1, 8)
VELORIA_PARAMETER(buoyancy, 0.16, fluid, -3, 4, buoyancy)
VELORIA_PARAMETER(flowSpeed, 0.12, fluid, -6, 6, wind)
VELORIA_PARAMETER(flowShear, 0.38, fluid, 0, 8, shear)
VELORIA_PARAMETER(emitRate, 2.2, fluid, 0, 5, emit)
VELORIA_PARAMETER(emitScale, 2.4, fluid, 0.3, 14, emitspread)
VELORIA_NUMBER(double, emitSpeed, 0.016, fluid, 0, 0.5)
VELORIA_NUMBER(double, emitHeight, 0.45, fluid, 0.05, 1.5)
VELORIA_NUMBER(double, emitCenter, 0.45, fluid, 0, 1)
VELORIA_NUMBER(double, emitThreshold, 0.2, fluid, 0, 1)
VELORIA_NUMBER(double, paletteSpread, 1.6, fluid, 0, 3)

// pointer
VELORIA_FIELD(PointerMode, pointerMode, PointerMode::vortex, pointer)
VELORIA_NUMBER(double, pointerStrength, 1.0, pointer, 0, 4)
VELORIA_NUMBER(double, pointerRadius, 0.12, pointer, 0.01, 0.5)
VELORIA_NUMBER(double, pointerGlow, 0.5, pointer, 0, 2)
VELORIA_FIELD(bool, pointerOnlyInStrip, true, pointer)

#undef VELORIA_FIELD
#undef VELORIA_NUMBER
#undef VELORIA_KEYWORD
#undef VELORIA_PARAMETER
