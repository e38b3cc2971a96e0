#include "render/FramePlan.h"

#include <algorithm>
#include <cmath>

#include "base/Range.h"

namespace veloria {

namespace {

constexpr double stripAspect = 0.2;
constexpr std::int64_t maxPressureIterations = 200;

/// Rounded and held to low..high whatever the value is; NaN gives low.
std::int64_t roundedWithin(double value, std::int64_t low, std::int64_t high) {
  return std::llround(bounded(value, {static_cast<double>(low), static_cast<double>(high)}));
}

std::uint32_t scaled(std::uint32_t pixels, double scale) {
  return std::max(1U, static_cast<std::uint32_t>(static_cast<double>(pixels) * scale));
}

}  // namespace

GridSize gridSizeFor(gpu::Size drawable, double quality, double verticalStretch) {
  const double w = drawable.width;
  const double h = drawable.height;
  const double aspect = w > 1 ? h / w : h;
  const bool strip = aspect < stripAspect;
  const double factor = strip ? 0.33 : 0.21;
  const std::int64_t cap = strip ? 384 : 1152;
  const double stretch = strip ? verticalStretch : 1.0;

  const std::int64_t gridW = roundedWithin(quality * w * factor, 128, 2048);
  const std::int64_t shaped = roundedWithin(stretch * aspect * static_cast<double>(gridW), 24, cap);
  const std::int64_t rows = std::max<std::int64_t>(drawable.height, 24);
  return {gridW, std::min(rows, shaped)};
}

double sceneScaleFor(gpu::Size drawable, double quality) {
  const double w = std::max<double>(drawable.width, 1);
  if (drawable.height / w < stripAspect) return 1.0;
  const double wanted = quality * 0.55;
  return std::isfinite(wanted) ? std::clamp(wanted, 0.3, 1.0) : 0.3;
}

gpu::Size sceneSizeFor(gpu::Size drawable, double scale) {
  return {scaled(drawable.width, scale), scaled(drawable.height, scale)};
}

gpu::Size glowSizeFor(gpu::Size scene) {
  return {std::max(1U, scene.width / 4), std::max(1U, scene.height / 4)};
}

double frameSeconds(double now, double lastStamp) {
  const double raw = lastStamp == 0 ? 1.0 / 60 : now - lastStamp;
  return std::clamp(raw, 1.0 / 240, 0.05);
}

std::int64_t pressureIterationsFor(std::int64_t wanted) {
  return std::clamp<std::int64_t>(wanted, 1, maxPressureIterations);
}

std::int64_t octavesFor(std::int64_t wanted) {
  return std::min(wanted, static_cast<std::int64_t>(ranges::detailOctaves.high));
}

double frameRateFor(std::int64_t wanted) {
  return wanted <= 0 ? 60.0 : std::min(static_cast<double>(wanted), ranges::framesPerSecond.high);
}

}  // namespace veloria
