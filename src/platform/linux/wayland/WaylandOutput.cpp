#include "platform/linux/wayland/WaylandOutput.h"

#include <algorithm>
#include <cmath>
#include <string>
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

namespace {

WaylandOutput& self(void* data) {
  return *static_cast<WaylandOutput*>(data);
}

bool isQuarterTurn(std::int32_t transform) {
  return transform == WL_OUTPUT_TRANSFORM_90 || transform == WL_OUTPUT_TRANSFORM_270 ||
         transform == WL_OUTPUT_TRANSFORM_FLIPPED_90 || transform == WL_OUTPUT_TRANSFORM_FLIPPED_270;
}

}  // namespace

const wl_output_listener WaylandOutput::listener = {
    .geometry =
        [](void* data, wl_output*, std::int32_t x, std::int32_t y, std::int32_t, std::int32_t, std::int32_t,
           const char*, const char*, std::int32_t transform) {
          OutputFacts& facts = self(data).pending_;
          facts.turned = isQuarterTurn(transform);
          if (self(data).logical_) return;
          facts.x = x;
          facts.y = y;
        },
    .mode =
        [](void* data, wl_output*, std::uint32_t flags, std::int32_t width, std::int32_t height, std::int32_t) {
          if ((flags & WL_OUTPUT_MODE_CURRENT) == 0) return;
          self(data).pending_.modeWidth = width;
          self(data).pending_.modeHeight = height;
        },
    .done = [](void* data, wl_output*) { self(data).complete(); },
    .scale = [](void* data, wl_output*, std::int32_t factor) { self(data).pending_.scale = factor; },
    .name = [](void* data, wl_output*, const char* name) { self(data).pending_.name = name; },
    .description = [](void*, wl_output*, const char*) {},
};

const zxdg_output_v1_listener WaylandOutput::logicalListener = {
    .logical_position =
        [](void* data, zxdg_output_v1*, std::int32_t x, std::int32_t y) {
          self(data).pending_.x = x;
          self(data).pending_.y = y;
        },
    .logical_size =
        [](void* data, zxdg_output_v1*, std::int32_t width, std::int32_t height) {
          self(data).pending_.logicalSize = Extent{static_cast<double>(width), static_cast<double>(height)};
        },
    // Up to version 2 the description is complete with this, and from version 3 on with wl_output's word.
    .done = [](void* data, zxdg_output_v1*) { self(data).complete(); },
    .name = [](void* data, zxdg_output_v1*, const char* name) { self(data).pending_.name = name; },
    .description = [](void*, zxdg_output_v1*, const char*) {},
};

WaylandOutput::WaylandOutput(WaylandPtr<wl_output> output, std::uint32_t global, std::function<void()> changed)
    : output_(std::move(output)), global_(global), changed_(std::move(changed)) {
  pending_.name = "output " + std::to_string(global);
  wl_output_add_listener(output_.get(), &listener, this);
}

void WaylandOutput::askForLogicalPlace(zxdg_output_manager_v1* manager) {
  if (logical_ || manager == nullptr) return;
  logical_.reset(zxdg_output_manager_v1_get_xdg_output(manager, output_.get()));
  zxdg_output_v1_add_listener(logical_.get(), &logicalListener, this);
}

void WaylandOutput::complete() {
  facts_ = pending_;
  changed_();
}

}  // namespace veloria
