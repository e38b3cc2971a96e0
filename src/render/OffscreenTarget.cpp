#include "render/OffscreenTarget.h"

namespace veloria {

OffscreenTarget::OffscreenTarget(gpu::Device& device, gpu::Size size)
    : texture_(device.makeTexture({.format = gpu::PixelFormat::rgba8Unorm,
                                   .size = size,
                                   .usage = gpu::TextureUsage::shaderRead | gpu::TextureUsage::renderTarget,
                                   .storage = gpu::StorageMode::shared,
                                   .label = "offscreen"})),
      drawable_(texture_),
      pixels_(texture_->byteCount()) {}

std::span<const std::uint8_t> OffscreenTarget::pixels() {
  texture_->read(std::as_writable_bytes(std::span(pixels_)));
  return pixels_;
}

}  // namespace veloria
