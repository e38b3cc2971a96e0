#pragma once

#import <Metal/Metal.h>

#include "gpu/Texture.h"

namespace veloria::gpu::metal {

class MetalDevice;

class MetalTexture final : public Texture {
 public:
  MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor);
  /// A drawable's texture, which can only be drawn into.
  MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor, id<MTLTexture> drawable);

  id<MTLTexture> texture() const { return texture_; }

 private:
  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;
  void requireOwn() const;
  id<MTLBuffer> staging() const;
  void dropStaging() const;

  MetalDevice& device_;
  id<MTLTexture> texture_;
  bool drawables_ = false;
  mutable id<MTLBuffer> staging_ = nil;  // kept for shared textures, which are written again and again
};

}  // namespace veloria::gpu::metal
