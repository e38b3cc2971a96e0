#include "ui/preview/PreviewCanvas.h"

#include <algorithm>
#include <utility>

namespace veloria {

namespace {

constexpr double maximumQuality = 0.5;
constexpr std::int64_t maximumPressureIterations = 24;

gpu::Size gpuSize(QSize pixels) {
  return {static_cast<std::uint32_t>(pixels.width()), static_cast<std::uint32_t>(pixels.height())};
}

StripGeometry stripOf(QSize pixels, double pixelsPerPoint) {
  StripGeometry strip;
  strip.windowFrame = {0, 0, pixels.width() / pixelsPerPoint, pixels.height() / pixelsPerPoint};
  strip.menuBarHeight = strip.windowFrame.height;
  strip.backingScale = pixelsPerPoint;
  return strip;
}

}  // namespace

NimbraConfig previewConfig(NimbraConfig config) {
  config.layerMode = LayerMode::desktopStrip;
  config.preserveMenuBarText = false;
  config.notchMode = NotchMode::ignore;
  config.pointerMode = PointerMode::none;
  config.quality = std::min(config.quality, maximumQuality);
  config.pressureIterations = std::min(config.pressureIterations, maximumPressureIterations);
  return config;
}

PreviewCanvas::PreviewCanvas(PreviewGpu& gpu, MediaClock clock)
    : gpu_(gpu), stats_(clock), renderer_(*gpu.device, *gpu.library, stats_, clock) {}

void PreviewCanvas::size(QSize pixels, double pixelsPerPoint) {
  const gpu::Size wanted = gpuSize(pixels);
  if (!target_ || target_->drawableSize() != wanted) target_.emplace(*gpu_.device, wanted);
  renderer_.geometry = stripOf(pixels, pixelsPerPoint);
  renderer_.resizeTargets(wanted);
  const GridSize grid = gridSizeFor(wanted, renderer_.config.quality, renderer_.config.verticalStretch);
  if (std::exchange(grid_, grid) != grid) renderer_.resizeSimGrid(wanted);
}

QImage PreviewCanvas::draw(const NimbraConfig& config, QSize pixels, double pixelsPerPoint) {
  renderer_.config = previewConfig(config);
  size(pixels, pixelsPerPoint);
  renderer_.draw(*target_);
  const auto rows = target_->pixels();
  return QImage(rows.data(), pixels.width(), pixels.height(), pixels.width() * 4, QImage::Format_RGBA8888_Premultiplied)
      .copy();
}

}  // namespace veloria
