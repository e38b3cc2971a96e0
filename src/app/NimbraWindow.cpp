#include "app/NimbraWindow.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "base/Log.h"
#include "render/FramePlan.h"
#include "render/ScreenGeometry.h"

namespace veloria {

namespace {

void logPlacement(const std::string& level, const StripGeometry& geometry) {
  if (!NimbraLog::enabled()) return;
  const Rect& frame = geometry.windowFrame;
  std::string notch = "none";
  if (geometry.notch) {
    notch = "(" + std::to_string(geometry.notch->x) + ", 0, " + std::to_string(geometry.notch->width) + ", " +
            std::to_string(geometry.notch->height) + ")";
  }
  NimbraLog::debugf("window level=%s frame=(%g, %g, %g, %g) notch=%s menuH=%g", level.c_str(), frame.x, frame.y,
                    frame.width, frame.height, notch.c_str(), geometry.menuBarHeight);
}

}  // namespace

std::optional<long> debugWindowLevel(const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  std::string_view digits(*text);
  if (digits.starts_with('+')) {
    digits.remove_prefix(1);
    if (digits.starts_with('-')) return std::nullopt;
  }
  long level = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), level);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return level;
}

OverlayLevel overlayLevelFor(LayerMode mode, const std::optional<std::string>& debugLevel) {
  if (const auto level = debugWindowLevel(debugLevel)) {
    return *level > 0 ? OverlayLevel::aboveMenuBar : OverlayLevel::desktop;
  }
  return mode == LayerMode::aboveMenuBar ? OverlayLevel::aboveMenuBar : OverlayLevel::desktop;
}

gpu::PixelFormat pixelFormatFor(bool hdrGlow) {
  return hdrGlow ? gpu::PixelFormat::rgba16Float : gpu::PixelFormat::bgra8Unorm;
}

NimbraWindow::NimbraWindow(std::unique_ptr<OverlayPanel> panel, std::weak_ptr<NimbraRenderer> renderer,
                           const Screen& screen, const NimbraConfig& config, Options options)
    : panel_(std::move(panel)), renderer_(std::move(renderer)), options_(std::move(options)) {
  panel_->setDrawHandler([this] { draw(); });
  apply(config, options_.edge, screen);
}

NimbraWindow::~NimbraWindow() {
  panel_->orderOut();
}

void NimbraWindow::apply(const NimbraConfig& config, EdgeChoice edge, const Screen& screen) {
  screen_ = screen;
  geometry_ = ScreenGeometry::geometry(screen, config, edge);
  level_ = overlayLevelFor(config.layerMode, options_.debugLevel);
  logPlacement(panel_->levelName(level_), geometry_);
  panel_->setLevel(level_);
  panel_->setFrame(geometry_.windowFrame, geometry_.backingScale);
  panel_->setPixelFormat(pixelFormatFor(config.hdrGlow));
  wantedRate_ = frameRateFor(config.framesPerSecond);
  panel_->setPreferredFramesPerSecond(wantedRate_ / divisor_);
  if (const auto renderer = renderer_.lock()) renderer->geometry = geometry_;
}

void NimbraWindow::setRateDivisor(int divisor) {
  divisor_ = divisor;
  panel_->setPreferredFramesPerSecond(wantedRate_ / divisor_);
}

void NimbraWindow::setRendering(bool on) {
  panel_->setPaused(!on);
  if (on) {
    panel_->orderFront();
  } else {
    panel_->orderOut();
  }
}

void NimbraWindow::draw() {
  const auto renderer = renderer_.lock();
  if (!renderer) return;
  try {
    renderer->draw(*panel_);
  } catch (const gpu::DeviceLostError& error) {
    systemLog(std::string("Veloria: the GPU was lost: ") + error.what());
    panel_->setPaused(true);
    if (options_.onDeviceLost) options_.onDeviceLost();
  }
}

}  // namespace veloria
