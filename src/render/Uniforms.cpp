#include "render/Uniforms.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "base/PlainNumber.h"
#include "render/FramePlan.h"

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

}  // namespace

PointerState mirrored(PointerState pointer, double height) {
  if (pointer.local) pointer.local->y = height - pointer.local->y;
  pointer.velocity.y = -pointer.velocity.y;
  return pointer;
}

Extent viewSizeFor(gpu::Size drawable, const std::optional<StripGeometry>& geometry) {
  double scale = 2;
  if (geometry) scale = geometry->backingScale > 1 ? geometry->backingScale : 1;
  return {std::max(drawable.width / scale, 1.0), std::max(drawable.height / scale, 1.0)};
}

// The members of the lists that are settings as they are; each of the others is set by name.
#define SETTING(name) params.name = uniformFloat(config.name);
#define OTHER(name)

SimParams makeSimParams(const NimbraConfig& config, double dtFrames, double simTime, const PointerState& pointer,
                        Extent viewSize) {
  SimParams params;
  VELORIA_SIM_PARAMS(OTHER, SETTING, OTHER)
  params.dt = uniformFloat(dtFrames);
  params.time = wrappedTime(simTime);
  params.curlOctaves = static_cast<float>(octavesFor(config.curlOctaves));
  params.ambient = uniformFloat(config.ambientLevel * 1.4);
  fillPointerForce(params, config, pointer, viewSize);
  params.palette = fourStops(config.palette());
  return params;
}

RenderParams makeRenderParams(const NimbraConfig& config, double simTime, Extent scene,
                              const std::optional<StripGeometry>& geometry, const PointerState& pointer,
                              float debugSolid) {
  RenderParams params;
  VELORIA_RENDER_PARAMS(OTHER, SETTING, OTHER)
  params.targetW = uniformFloat(scene.width);
  params.targetH = uniformFloat(scene.height);
  params.time = wrappedTime(simTime);
  params.one = 1;
  params.detailOctaves = static_cast<float>(octavesFor(config.detailOctaves));
  params.glowRadius = uniformFloat(std::min(config.glowRadius, maxGlowRadius));
  if (geometry) fillNotch(params, config, *geometry);
  params.fadeBottom = geometry ? uniformFloat(bottomFade(config, *geometry)) : 0;
  fillPointerGlow(params, config, pointer, geometry);
  params.palette = fourStops(config.palette());
  params.opaque = config.opaqueBackground && config.layerMode != LayerMode::aboveMenuBar ? 1 : 0;
  params.debugSolid = debugSolid;
  return params;
}

float debugSolidValue(const char* text) {
  if (text == nullptr) return 0;
  return uniformFloat(plainNumber(text).value_or(0));
}

}  // namespace veloria
