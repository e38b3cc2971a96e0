#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Surface.h"
#include "ports/FrameTarget.h"

namespace veloria {

/// A frame target without a display: every frame goes into the same texture of 8 bits a channel.
class OffscreenTarget final : public FrameTarget {
 public:
  OffscreenTarget(gpu::Device& device, gpu::Size size)
      : texture_(device.makeTexture({.format = gpu::PixelFormat::rgba8Unorm,
                                     .size = size,
                                     .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget,
                                     .storage = gpu::StorageMode::shared,
                                     .label = "offscreen"})),
        drawable_(texture_),
        pixels_(texture_->byteCount()) {}

  gpu::Size drawableSize() const override { return texture_->size(); }
  gpu::PixelFormat colorPixelFormat() const override { return texture_->format(); }
  gpu::Drawable* currentDrawable() override { return &drawable_; }

  /// Waits for the frame and returns it: RGBA rows from the top, premultiplied. Valid until the next call.
  std::span<const std::uint8_t> pixels() {
    texture_->read(std::as_writable_bytes(std::span(pixels_)));
    return pixels_;
  }

 private:
  std::shared_ptr<gpu::Texture> texture_;
  gpu::OffscreenDrawable drawable_;
  std::vector<std::uint8_t> pixels_;
};

}  // namespace veloria
