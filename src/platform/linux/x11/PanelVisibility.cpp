#include "platform/linux/x11/PanelVisibility.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

constexpr double seeThroughAlpha = 0.9;
constexpr double opaque = 0xFFFFFFFFU;
constexpr std::uint8_t depthWithAlpha = 32;

// The share of the strip's width that panels of one kind cover.
double coveredShare(const PixelRect& strip, std::span<const PanelFacts> panels, SeeThrough kind,
                    bool compositorRunning) {
  std::vector<std::pair<int, int>> spans;
  for (const PanelFacts& panel : panels) {
    const PixelRect shared = intersection(panel.bounds, strip);
    if (seeThrough(panel, compositorRunning) == kind && !shared.empty()) spans.emplace_back(shared.x, shared.right());
  }
  std::sort(spans.begin(), spans.end());
  int covered = 0;
  int reached = strip.x;
  for (const auto& [start, end] : spans) {
    covered += std::max(0, end - std::max(start, reached));
    reached = std::max(reached, end);
  }
  return strip.width > 0 ? static_cast<double>(covered) / strip.width : 0;
}

}  // namespace

SeeThrough seeThrough(const PanelFacts& panel, bool compositorRunning) {
  if (!compositorRunning) return SeeThrough::no;
  if (panel.opacity / opaque < seeThroughAlpha) return SeeThrough::yes;
  if (panel.depth != depthWithAlpha) return SeeThrough::no;
  if (!panel.meanAlpha) return SeeThrough::unknown;
  return *panel.meanAlpha < seeThroughAlpha ? SeeThrough::yes : SeeThrough::no;
}

std::string panelHint(const PixelRect& strip, std::span<const PanelFacts> panels, bool compositorRunning) {
  const double hidden = coveredShare(strip, panels, SeeThrough::no, compositorRunning);
  const double unknown = coveredShare(strip, panels, SeeThrough::unknown, compositorRunning);
  if (hidden >= 0.5) return opaquePanelHint();
  return hidden + unknown >= 0.5 ? unknownPanelHint() : std::string();
}

}  // namespace veloria
