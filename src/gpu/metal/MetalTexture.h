#pragma once

#import <Metal/Metal.h>

#include <memory>

#include "gpu/Texture.h"

namespace veloria::gpu::metal {

class MetalDevice;

class MetalTexture final : public Texture {
 public:
  MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor);
  /// A texture of the system's, a drawable's or a captured picture's, which can't be read or written here. `owner` is
  /// kept as long as it.
  MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor, id<MTLTexture> texture,
               std::shared_ptr<const void> owner = nullptr);

  id<MTLTexture> texture() const { return texture_; }

 private:
  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;
  void requireOwn() const;
  id<MTLBuffer> staging() const;
  void dropStaging() const;

  MetalDevice& device_;
  id<MTLTexture> texture_;
  bool systems_ = false;
  std::shared_ptr<const void> owner_;
  mutable id<MTLBuffer> staging_ = nil;  // kept for shared textures, which are written again and again
};

}  // namespace veloria::gpu::metal
