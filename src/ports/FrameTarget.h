#pragma once

#include "gpu/Surface.h"
#include "gpu/Types.h"

namespace veloria {

/// Port: what a renderer draws a frame into. Main thread.
class FrameTarget {
 public:
  virtual ~FrameTarget() = default;
  /// The size of the next drawable in pixels.
  virtual gpu::Size drawableSize() const = 0;
  /// The format of the next drawable; `invalid` while there can't be one.
  virtual gpu::PixelFormat colorPixelFormat() const = 0;
  /// The drawable of this frame, or nullptr when none is free. Never blocks.
  virtual gpu::Drawable* currentDrawable() = 0;
};

}  // namespace veloria
