#include "gpu/metal/MetalSurface.h"

#include "gpu/metal/MetalDevice.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

TextureDescriptor describe(id<MTLTexture> texture) {
  TextureDescriptor descriptor;
  descriptor.format = static_cast<PixelFormat>(texture.pixelFormat);
  descriptor.size = {static_cast<std::uint32_t>(texture.width), static_cast<std::uint32_t>(texture.height)};
  descriptor.usage = TextureUsage::shaderRead | TextureUsage::renderTarget;
  descriptor.label = "drawable";
  return descriptor;
}

}  // namespace

MetalSurface::MetalSurface(MetalDevice& device, CAMetalLayer* layer) : device_(device), layer_(layer) {
  layer_.device = device.device();
  layer_.framebufferOnly = NO;
  layer_.maximumDrawableCount = MetalDrawableCount::drawables;
}

void MetalSurface::configure(Size size, PixelFormat wanted) {
  const PixelFormat format =
      wanted == PixelFormat::rgba16Float ? PixelFormat::rgba16Float : PixelFormat::bgra8UnormSrgb;
  if (size == size_ && format == format_) return;
  if (size.width > 0 && size.height > 0) layer_.drawableSize = CGSizeMake(size.width, size.height);
  layer_.pixelFormat = metalFormat(format);
  stale_ = true;
  size_ = size;
  format_ = format;
}

bool MetalSurface::usable() const {
  return !device_.lost() && format_ != PixelFormat::invalid && size_.width > 0 && size_.height > 0;
}

Drawable* MetalSurface::nextDrawable() {
  if (!usable()) return nullptr;
  if (current_ && !current_->presented() && !stale_) return &*current_;
  current_.reset();
  if (!count_->free(MetalDrawableCount::Clock::now())) return nullptr;
  @autoreleasepool {
    id<CAMetalDrawable> drawable = [layer_ nextDrawable];
    if (drawable == nil) return nullptr;
    current_.emplace(device_, drawable, describe(drawable.texture), count_);
  }
  stale_ = false;
  return &*current_;
}

}  // namespace veloria::gpu::metal
