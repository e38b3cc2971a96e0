#include "platform/linux/wayland/OutputFacts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veloria {

namespace {

constexpr int highestScale = 8;
constexpr double steps = 120;
constexpr double largestSide = 65535;

Extent pixelSize(const OutputFacts& facts) {
  Extent size{static_cast<double>(facts.modeWidth), static_cast<double>(facts.modeHeight)};
  if (facts.turned) std::swap(size.width, size.height);
  return size;
}

int wholeScale(const OutputFacts& facts) {
  return std::clamp(facts.scale, 1, highestScale);
}

Extent logicalSize(const OutputFacts& facts) {
  if (facts.logicalSize) return *facts.logicalSize;
  const Extent pixels = pixelSize(facts);
  return {std::floor(pixels.width / wholeScale(facts)), std::floor(pixels.height / wholeScale(facts))};
}

bool usable(const Extent& size) {
  return size.width >= 1 && size.height >= 1 && size.width <= largestSide && size.height <= largestSide;
}

}  // namespace

std::optional<MonitorDescription> monitorOf(const OutputFacts& facts) {
  const Extent size = logicalSize(facts);
  if (!usable(size)) return std::nullopt;
  const PixelRect frame{facts.x, facts.y, static_cast<int>(size.width), static_cast<int>(size.height)};
  auto plausible = plausibleMonitors({{facts.name, frame, frame}});
  if (plausible.empty()) return std::nullopt;
  return std::move(plausible.front());
}

double pixelsPerPoint(const OutputFacts& facts, bool fractional) {
  const Extent pixels = pixelSize(facts);
  const Extent logical = logicalSize(facts);
  if (!fractional || !facts.logicalSize || !usable(pixels) || !usable(logical)) return wholeScale(facts);
  // The longer side, whose rounding to whole points weighs less.
  const double ratio = logical.width >= logical.height ? pixels.width / logical.width : pixels.height / logical.height;
  const double scale = std::round(ratio * steps) / steps;
  return scale >= 0.5 && scale <= highestScale ? scale : wholeScale(facts);
}

}  // namespace veloria
