#include "gpu/metal/MetalTexture.h"

#include <cstring>
#include <string>
#include <utility>

#include "gpu/Types.h"
#include "gpu/metal/MetalDevice.h"
#include "gpu/metal/MetalError.h"

namespace veloria::gpu::metal {

namespace {

id<MTLTexture> makeTexture(id<MTLDevice> device, const TextureDescriptor& wanted) {
  MTLTextureDescriptor* descriptor = [MTLTextureDescriptor texture2DDescriptorWithPixelFormat:metalFormat(wanted.format)
                                                                                        width:wanted.size.width
                                                                                       height:wanted.size.height
                                                                                    mipmapped:NO];
  descriptor.usage = metalUsage(wanted.usage);
  descriptor.storageMode = wanted.storage == StorageMode::shared ? MTLStorageModeShared : MTLStorageModePrivate;
  id<MTLTexture> texture = [device newTextureWithDescriptor:descriptor];
  if (texture == nil) {
    throw DeviceError("making texture \"" + wanted.label + "\" (" + pixelFormatName(wanted.format) + ", " +
                      std::to_string(wanted.size.width) + " x " + std::to_string(wanted.size.height) + ")");
  }
  texture.label = metalString(wanted.label);
  return texture;
}

// Runs `encode(id<MTLBlitCommandEncoder>)` behind everything committed so far, and waits for it.
template <typename Encode>
void blit(const MetalDevice& device, Encode encode) {
  device.requireAlive();
  id<MTLCommandBuffer> commands = [device.queue() commandBuffer];
  id<MTLBlitCommandEncoder> encoder = [commands blitCommandEncoder];
  if (encoder == nil) throw DeviceError("the device copies nothing");
  encode(encoder);
  [encoder endEncoding];
  [commands commit];
  [commands waitUntilCompleted];
  if (commands.status == MTLCommandBufferStatusError) fail("copying a texture", commands.error);
}

}  // namespace

MetalTexture::MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor)
    : Texture(descriptor), device_(device) {
  @autoreleasepool {
    texture_ = makeTexture(device.device(), descriptor);
  }
}

MetalTexture::MetalTexture(MetalDevice& device, const TextureDescriptor& descriptor, id<MTLTexture> texture,
                           std::shared_ptr<const void> owner)
    : Texture(descriptor), device_(device), texture_(texture), systems_(true), owner_(std::move(owner)) {}

void MetalTexture::requireOwn() const {
  require(!systems_, "a texture of the system's can't be read or written");
}

id<MTLBuffer> MetalTexture::staging() const {
  if (staging_ == nil) {
    staging_ = [device_.device() newBufferWithLength:byteCount() options:MTLResourceStorageModeShared];
    if (staging_ == nil) throw DeviceError("no memory to copy texture \"" + descriptor().label + "\"");
  }
  return staging_;
}

void MetalTexture::dropStaging() const {
  if (descriptor().storage != StorageMode::shared) staging_ = nil;
}

void MetalTexture::doWrite(std::span<const std::byte> rows) {
  requireOwn();
  @autoreleasepool {
    id<MTLBuffer> buffer = staging();
    std::memcpy(buffer.contents, rows.data(), rows.size());
    blit(device_, [&](id<MTLBlitCommandEncoder> encoder) {
      [encoder copyFromBuffer:buffer
                 sourceOffset:0
            sourceBytesPerRow:bytesPerPixel(format()) * size().width
          sourceBytesPerImage:byteCount()
                   sourceSize:MTLSizeMake(size().width, size().height, 1)
                    toTexture:texture_
             destinationSlice:0
             destinationLevel:0
            destinationOrigin:MTLOriginMake(0, 0, 0)];
    });
    dropStaging();
  }
}

void MetalTexture::doRead(std::span<std::byte> rows) const {
  requireOwn();
  @autoreleasepool {
    id<MTLBuffer> buffer = staging();
    blit(device_, [&](id<MTLBlitCommandEncoder> encoder) {
      [encoder copyFromTexture:texture_
                       sourceSlice:0
                       sourceLevel:0
                      sourceOrigin:MTLOriginMake(0, 0, 0)
                        sourceSize:MTLSizeMake(size().width, size().height, 1)
                          toBuffer:buffer
                 destinationOffset:0
            destinationBytesPerRow:bytesPerPixel(format()) * size().width
          destinationBytesPerImage:byteCount()];
    });
    std::memcpy(rows.data(), buffer.contents, rows.size());
    dropStaging();
  }
}

}  // namespace veloria::gpu::metal
