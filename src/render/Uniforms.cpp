#include "render/Uniforms.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "base/PlainNumber.h"
#include "render/FramePlan.h"
#include "render/UniformFloat.h"

namespace veloria {

namespace {

std::array<ColorStop, 4> fourStops(const Palette& palette) {
  if (palette.stops.size() < 4) throw std::logic_error("palette '" + palette.name + "' has fewer than four stops");
  std::array<ColorStop, 4> stops{};
  for (std::size_t i = 0; i < stops.size(); ++i) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
      stops[i][channel] = std::clamp(uniformFloat(palette.stops[i][channel]), 0.0F, 1.0F);
    }
  }
  return stops;
}

float pointerForce(PointerMode mode) {
  switch (mode) {
    case PointerMode::push:
      return 1;
    case PointerMode::vortex:
      return 2;
    case PointerMode::calm:
      return 3;
    case PointerMode::none:
    case PointerMode::glow:
      return 0;
  }
  return 0;
}

void fillPointerForce(SimParams& params, const NimbraConfig& config, const PointerState& pointer, Extent view) {
  const float mode = pointerForce(config.pointerMode);
  if (mode == 0 || !pointer.inside || !pointer.local) return;
  params.pointerX = uniformFloat(pointer.local->x / view.width);
  params.pointerY = uniformFloat(1 - pointer.local->y / view.height);
  params.pointerDX = uniformFloat(pointer.velocity.x / view.width);
  params.pointerDY = uniformFloat(-pointer.velocity.y / view.height);
  params.pointerRadius = uniformFloat(config.pointerRadius);
  params.pointerStrength = uniformFloat(config.pointerStrength);
  params.pointerActive = 1;
  params.pointerMode = mode;
}

void fillNotch(RenderParams& params, const NimbraConfig& config, const StripGeometry& geometry) {
  const Rect& window = geometry.windowFrame;
  if (!geometry.notch || config.notchMode == NotchMode::ignore || window.empty()) return;
  params.notchLeft = uniformFloat(geometry.notch->minX() / window.width);
  params.notchRight = uniformFloat(geometry.notch->maxX() / window.width);
  params.notchBottom = uniformFloat(geometry.notch->maxY() / window.height);
  params.notchPresent = 1;
  params.notchHalo = config.notchMode == NotchMode::halo ? 1 : 0;
  params.notchFeather = uniformFloat(config.notchFeather);
}

/// The bottom fade acts on the bleed below the bar only.
double bottomFade(const NimbraConfig& config, const StripGeometry& geometry) {
  const double height = geometry.windowFrame.height;
  if (!(height > geometry.menuBarHeight + 0.5)) return 0;
  return std::max(0.02, config.fadeBottom * (1 - geometry.menuBarHeight / height) * 2.2);
}

void fillPointerGlow(RenderParams& params, const NimbraConfig& config, const PointerState& pointer,
                     const std::optional<StripGeometry>& geometry) {
  if (!pointer.local || !pointer.inside || config.pointerMode != PointerMode::glow) return;
  const double width = geometry ? std::max(geometry->windowFrame.width, 1.0) : 1.0;
  const double height = geometry ? std::max(geometry->windowFrame.height, 1.0) : 1.0;
  params.pointerX = uniformFloat(pointer.local->x / width);
  params.pointerY = uniformFloat(pointer.local->y / height);
  params.pointerGlow = uniformFloat(config.pointerGlow);
  params.pointerRadius = uniformFloat(config.pointerRadius);
  params.pointerGlowOn = 1;
}

void fillLook(RenderParams& params, const NimbraConfig& config) {
  params.exposure = uniformFloat(config.exposure);
  params.opacity = uniformFloat(config.opacity);
  params.contrast = uniformFloat(config.contrast);
  params.saturation = uniformFloat(config.saturation);
  params.hueShift = uniformFloat(config.hueShift);
  params.colorCycle = uniformFloat(config.colorCycle);
  params.rayIntensity = uniformFloat(config.rayIntensity);
  params.raySharpness = uniformFloat(config.raySharpness);
  params.rayScale = uniformFloat(config.rayScale);
  params.raySpeed = uniformFloat(config.raySpeed);
  params.rayFlow = uniformFloat(config.rayFlow);
  params.detailOctaves = static_cast<float>(octavesFor(config.detailOctaves));
  params.glowAmount = uniformFloat(config.glowAmount);
  params.glowRadius = uniformFloat(std::min(config.glowRadius, maxGlowRadius));
  params.shimmer = uniformFloat(config.shimmer);
  params.ambientLevel = uniformFloat(config.ambientLevel);
  params.heightTint = uniformFloat(config.heightTint);
  params.coverGain = uniformFloat(config.coverGain);
  params.additive = uniformFloat(config.additive);
  params.hueSpread = uniformFloat(config.hueSpread);
  params.hueSpreadScale = uniformFloat(config.hueSpreadScale);
  params.hueSpreadDrift = uniformFloat(config.hueSpreadDrift);
}

void fillText(RenderParams& params, const NimbraConfig& config) {
  params.textThreshold = uniformFloat(config.textThreshold);
  params.textSoftness = uniformFloat(config.textSoftness);
  params.textDilate = uniformFloat(config.textDilate);
  params.textBlur = uniformFloat(config.textBlur);
  params.textShadow = uniformFloat(config.textShadow);
  params.textShadowSpread = uniformFloat(config.textShadowSpread);
}

}  // namespace

Extent viewSizeFor(gpu::Size drawable, const std::optional<StripGeometry>& geometry) {
  double scale = 2;
  if (geometry) scale = geometry->backingScale > 1 ? geometry->backingScale : 1;
  return {std::max(drawable.width / scale, 1.0), std::max(drawable.height / scale, 1.0)};
}

SimParams makeSimParams(const NimbraConfig& config, double dtFrames, double simTime, const PointerState& pointer,
                        Extent viewSize) {
  SimParams params;
  params.dt = uniformFloat(dtFrames);
  params.time = wrappedTime(simTime);
  params.velDissipation = uniformFloat(config.velDissipation);
  params.dyeDissipation = uniformFloat(config.dyeDissipation);
  params.vorticity = uniformFloat(config.vorticity);
  params.curlStrength = uniformFloat(config.curlStrength);
  params.curlScale = uniformFloat(config.curlScale);
  params.curlSpeed = uniformFloat(config.curlSpeed);
  params.curlOctaves = static_cast<float>(octavesFor(config.curlOctaves));
  params.buoyancy = uniformFloat(config.buoyancy);
  params.emitRate = uniformFloat(config.emitRate);
  params.emitScale = uniformFloat(config.emitScale);
  params.emitSpeed = uniformFloat(config.emitSpeed);
  params.emitHeight = uniformFloat(config.emitHeight);
  params.emitCenter = uniformFloat(config.emitCenter);
  params.emitThreshold = uniformFloat(config.emitThreshold);
  params.ambient = uniformFloat(config.ambientLevel * 1.4);
  params.flowSpeed = uniformFloat(config.flowSpeed);
  params.flowShear = uniformFloat(config.flowShear);
  fillPointerForce(params, config, pointer, viewSize);
  params.paletteSpread = uniformFloat(config.paletteSpread);
  params.palette = fourStops(config.palette());
  return params;
}

RenderParams makeRenderParams(const NimbraConfig& config, double simTime, Extent scene,
                              const std::optional<StripGeometry>& geometry, const PointerState& pointer,
                              float debugSolid) {
  RenderParams params;
  params.targetW = uniformFloat(scene.width);
  params.targetH = uniformFloat(scene.height);
  params.time = wrappedTime(simTime);
  fillLook(params, config);
  if (geometry) fillNotch(params, config, *geometry);
  params.fadeTop = uniformFloat(config.fadeTop);
  params.fadeBottom = geometry ? uniformFloat(bottomFade(config, *geometry)) : 0;
  params.fadeSide = uniformFloat(config.fadeSide);
  fillPointerGlow(params, config, pointer, geometry);
  params.palette = fourStops(config.palette());
  fillText(params, config);
  params.opaque = config.opaqueBackground && config.layerMode != LayerMode::aboveMenuBar ? 1 : 0;
  params.backgroundLift = uniformFloat(config.backgroundLift);
  params.debugSolid = debugSolid;
  return params;
}

float debugSolidValue(const char* text) {
  if (text == nullptr) return 0;
  return uniformFloat(plainNumber(text).value_or(0));
}

}  // namespace veloria
