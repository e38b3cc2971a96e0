#pragma once

#import <Metal/Metal.h>

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

}  // namespace veloria::gpu::metal
