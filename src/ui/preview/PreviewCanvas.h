#pragma once

#include <QImage>
#include <QSize>
#include <optional>

#include "base/MediaClock.h"
#include "render/FramePlan.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"
#include "ui/preview/PreviewGpu.h"

namespace veloria {

/// Draws the band of a record into pictures. One thread; `gpu` must outlive it.
class PreviewCanvas {
 public:
  /// Throws what NimbraRenderer's constructor throws.
  explicit PreviewCanvas(PreviewGpu& gpu, MediaClock clock = mediaTime);

  /// The next frame, of `pixels` (at least 1 x 1), without anything behind the band. Another size begins the fluid
  /// anew. Throws gpu::DeviceError.
  QImage draw(const NimbraConfig& config, QSize pixels, double pixelsPerPoint);

 private:
  void size(QSize pixels, double pixelsPerPoint);

  PreviewGpu& gpu_;
  RenderStats stats_;
  NimbraRenderer renderer_;
  std::optional<OffscreenTarget> target_;
  GridSize grid_;
};

/// What a preview makes of a record: the look alone, without what belongs to a screen, and not more work than a small
/// picture is worth.
NimbraConfig previewConfig(NimbraConfig config);

}  // namespace veloria
