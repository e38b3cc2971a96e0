#pragma once

#import <Metal/Metal.h>

#include <memory>

#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria::gpu::metal {

// The interface's numbers are Metal's own.
static_assert(static_cast<NSUInteger>(PixelFormat::invalid) == MTLPixelFormatInvalid);
static_assert(static_cast<NSUInteger>(PixelFormat::r16Float) == MTLPixelFormatR16Float);
static_assert(static_cast<NSUInteger>(PixelFormat::rg16Float) == MTLPixelFormatRG16Float);
static_assert(static_cast<NSUInteger>(PixelFormat::rgba8Unorm) == MTLPixelFormatRGBA8Unorm);
static_assert(static_cast<NSUInteger>(PixelFormat::bgra8Unorm) == MTLPixelFormatBGRA8Unorm);
static_assert(static_cast<NSUInteger>(PixelFormat::bgra8UnormSrgb) == MTLPixelFormatBGRA8Unorm_sRGB);
static_assert(static_cast<NSUInteger>(PixelFormat::rgba16Float) == MTLPixelFormatRGBA16Float);
static_assert(static_cast<NSUInteger>(TextureUsage::shaderRead) == MTLTextureUsageShaderRead);
static_assert(static_cast<NSUInteger>(TextureUsage::shaderWrite) == MTLTextureUsageShaderWrite);
static_assert(static_cast<NSUInteger>(TextureUsage::renderTarget) == MTLTextureUsageRenderTarget);

constexpr MTLPixelFormat metalFormat(PixelFormat format) {
  return static_cast<MTLPixelFormat>(format);
}

constexpr MTLTextureUsage metalUsage(TextureUsage usage) {
  return static_cast<MTLTextureUsage>(usage);
}

class MetalDevice;

class MetalTexture final : public Texture {
 public:
  MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor);
  /// Wraps a texture of the system (of a drawable or a captured picture), which can't be read or written here. Keeps
  /// `owner` alive.
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
