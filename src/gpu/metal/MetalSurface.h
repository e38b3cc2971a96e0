#pragma once

#import <Metal/Metal.h>
#import <QuartzCore/QuartzCore.h>

#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "gpu/metal/MetalCompletion.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

/// One image of a layer, for one frame.
class MetalDrawable final : public Drawable {
 public:
  /// `count` may outlive this object and its surface: the system reports the last images late.
  MetalDrawable(MetalDevice& device, id<CAMetalDrawable> drawable, const TextureDescriptor& descriptor,
                std::shared_ptr<MetalDrawableCount> count)
      : drawable_(drawable), texture_(device, descriptor, drawable.texture), count_(std::move(count)) {}

  const Texture& texture() const override { return texture_; }
  bool presented() const { return presented_; }

  /// Shows it when `commands` are done.
  void present(id<MTLCommandBuffer> commands) {
    presented_ = true;
    count_->presented(MetalDrawableCount::Clock::now());
    const std::shared_ptr<MetalDrawableCount> count = count_;
    [drawable_ addPresentedHandler:^(id<MTLDrawable>) {
      count->shown();
    }];
    [commands presentDrawable:drawable_];
  }

 private:
  id<CAMetalDrawable> drawable_;
  MetalTexture texture_;
  std::shared_ptr<MetalDrawableCount> count_;
  bool presented_ = false;
};

class MetalDevice;

class MetalSurface final : public Surface {
 public:
  MetalSurface(MetalDevice& device, CAMetalLayer* layer);

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override { return format_; }
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

 private:
  bool usable() const;

  MetalDevice& device_;
  CAMetalLayer* layer_;
  Size size_;
  PixelFormat format_ = PixelFormat::invalid;
  std::shared_ptr<MetalDrawableCount> count_ = std::make_shared<MetalDrawableCount>();
  std::optional<MetalDrawable> current_;
  bool stale_ = false;  // the layer has changed since the one in hand was taken
};

}  // namespace veloria::gpu::metal
