#pragma once

#include <memory>

#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu {

/// One image of a surface, acquired for one frame: draw into texture(), then pass it to Frame::present(). Until then
/// nextDrawable() returns the same one again.
class Drawable {
 public:
  virtual ~Drawable() = default;
  virtual const Texture& texture() const = 0;
  /// False for one that belongs to no surface: presenting it does nothing.
  virtual bool onScreen() const { return true; }
};

/// A texture in a drawable's place, for drawing without a display.
class OffscreenDrawable final : public Drawable {
 public:
  /// The texture needs the usage renderTarget.
  explicit OffscreenDrawable(std::shared_ptr<Texture> texture) : texture_(std::move(texture)) {}
  const Texture& texture() const override { return *texture_; }
  bool onScreen() const override { return false; }

 private:
  std::shared_ptr<Texture> texture_;
};

/// A native window that can be drawn into. Main thread only. Nothing here ever blocks on the display server.
class Surface {
 public:
  virtual ~Surface() = default;
  Surface(const Surface&) = delete;
  Surface& operator=(const Surface&) = delete;

  /// Sets the size in pixels and the wanted format (rgba16Float for extended range, else bgra8Unorm). Takes effect with
  /// the next drawable. Repeating the same values costs nothing. A size of 0 means nothing to draw.
  virtual void configure(Size size, PixelFormat wanted) = 0;

  /// The format in use: the wanted one if the device offers it for this window, else bgra8Unorm or rgba8Unorm.
  /// `invalid` while the surface can't be used.
  virtual PixelFormat format() const = 0;
  virtual Size size() const = 0;

  /// An image to draw into, or nullptr if none is free right now, the window is gone or the size is 0. Rebuilds an
  /// out-of-date swapchain and a lost surface; the pauses between attempts grow to one second.
  virtual Drawable* nextDrawable() = 0;

 protected:
  Surface() = default;
};

}  // namespace veloria::gpu
