// Every field of the settings record, once: type, name (which is also its key in the file), default, group.
// The order is the order in which the fields are written. Include it with VELORIA_FIELD defined.

// placement
VELORIA_FIELD(bool, enabled, true, placement)
VELORIA_FIELD(std::int64_t, framesPerSecond, 60, placement)
VELORIA_FIELD(bool, pauseInFullScreen, true, placement)
VELORIA_FIELD(bool, pauseOnBattery, false, placement)
VELORIA_FIELD(bool, allDisplays, false, placement)
VELORIA_FIELD(bool, hdrGlow, true, placement)
VELORIA_FIELD(LayerMode, layerMode, LayerMode::desktopStrip, placement)
VELORIA_FIELD(double, extraHeight, 0.0, placement)
VELORIA_FIELD(double, fadeTop, 0.0, placement)
VELORIA_FIELD(double, fadeBottom, 0.35, placement)
VELORIA_FIELD(double, fadeSide, 0.015, placement)

// drive
VELORIA_FIELD(Visualizer, visualizer, Visualizer::autonomous, drive)
VELORIA_FIELD(std::string, customScript, "", drive)
VELORIA_FIELD(bool, matchWallpaper, false, drive)
VELORIA_FIELD(double, weatherLatitude, 39.7392, drive)
VELORIA_FIELD(double, weatherLongitude, -104.9903, drive)

// text
VELORIA_FIELD(bool, preserveMenuBarText, false, text)
VELORIA_FIELD(double, textThreshold, 0.055, text)
VELORIA_FIELD(double, textSoftness, 0.09, text)
VELORIA_FIELD(double, textDilate, 2.2, text)
VELORIA_FIELD(double, textBlur, 7.0, text)
VELORIA_FIELD(bool, opaqueBackground, true, text)
VELORIA_FIELD(double, backgroundLift, 0.1, text)
VELORIA_FIELD(double, textShadow, 0.0, text)
VELORIA_FIELD(double, textShadowSpread, 5.0, text)

// notch
VELORIA_FIELD(NotchMode, notchMode, NotchMode::mask, notch)
VELORIA_FIELD(double, notchFeather, 0.014, notch)
VELORIA_FIELD(double, notchPadding, 0.0, notch)

// palette
VELORIA_FIELD(std::string, paletteName, "Classic Nimbra", palette)
VELORIA_FIELD(std::optional<Palette>, customPalette, std::nullopt, palette)

// look
VELORIA_FIELD(double, opacity, 0.85, look)
VELORIA_FIELD(double, exposure, 1.25, look)
VELORIA_FIELD(double, contrast, 0.95, look)
VELORIA_FIELD(double, saturation, 1.4, look)
VELORIA_FIELD(double, hueShift, 0.0, look)
VELORIA_FIELD(double, colorCycle, 0.0003, look)
VELORIA_FIELD(double, heightTint, 0.28, look)
VELORIA_FIELD(double, hueSpread, 0.2, look)
VELORIA_FIELD(double, hueSpreadScale, 2.6, look)
VELORIA_FIELD(double, hueSpreadDrift, 0.005, look)
VELORIA_FIELD(double, additive, 0.0, look)
VELORIA_FIELD(double, coverGain, 1.0, look)
VELORIA_FIELD(double, glowAmount, 0.8, look)
VELORIA_FIELD(double, glowRadius, 1.6, look)
VELORIA_FIELD(double, ambientLevel, 0.035, look)
VELORIA_FIELD(double, rayIntensity, 0.5, look)
VELORIA_FIELD(double, raySharpness, 1.1, look)
VELORIA_FIELD(double, rayScale, 4.2, look)
VELORIA_FIELD(double, raySpeed, 0.004, look)
VELORIA_FIELD(double, rayFlow, 0.02, look)
VELORIA_FIELD(double, shimmer, 0.015, look)
VELORIA_FIELD(std::int64_t, detailOctaves, 3, look)

// resolution
VELORIA_FIELD(double, tempo, 1.0, resolution)
VELORIA_FIELD(double, quality, 1.0, resolution)
VELORIA_FIELD(double, verticalStretch, 4.0, resolution)
VELORIA_FIELD(std::int64_t, pressureIterations, 24, resolution)

// fluid
VELORIA_FIELD(double, timeScale, 0.18, fluid)
VELORIA_FIELD(double, velDissipation, 0.995, fluid)
VELORIA_FIELD(double, dyeDissipation, 0.9965, fluid)
VELORIA_FIELD(double, vorticity, 0.38, fluid)
VELORIA_FIELD(double, curlStrength, 0.75, fluid)
VELORIA_FIELD(double, curlScale, 2.4, fluid)
VELORIA_FIELD(double, curlSpeed, 0.011, fluid)
VELORIA_FIELD(std::int64_t, curlOctaves, 3, fluid)
VELORIA_FIELD(double, buoyancy, 0.16, fluid)
VELORIA_FIELD(double, flowSpeed, 0.12, fluid)
VELORIA_FIELD(double, flowShear, 0.38, fluid)
VELORIA_FIELD(double, emitRate, 2.2, fluid)
VELORIA_FIELD(double, emitScale, 2.4, fluid)
VELORIA_FIELD(double, emitSpeed, 0.016, fluid)
VELORIA_FIELD(double, emitHeight, 0.45, fluid)
VELORIA_FIELD(double, emitCenter, 0.45, fluid)
VELORIA_FIELD(double, emitThreshold, 0.2, fluid)
VELORIA_FIELD(double, paletteSpread, 1.6, fluid)

// pointer
VELORIA_FIELD(PointerMode, pointerMode, PointerMode::vortex, pointer)
VELORIA_FIELD(double, pointerStrength, 1.0, pointer)
VELORIA_FIELD(double, pointerRadius, 0.12, pointer)
VELORIA_FIELD(double, pointerGlow, 0.5, pointer)
VELORIA_FIELD(bool, pointerOnlyInStrip, true, pointer)

#undef VELORIA_FIELD
