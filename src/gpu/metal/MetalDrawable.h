#pragma once

#import <Metal/Metal.h>
#import <QuartzCore/QuartzCore.h>

#include <memory>

#include "gpu/Surface.h"
#include "gpu/metal/MetalDrawableCount.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

/// One image of a layer, for one frame.
class MetalDrawable final : public Drawable {
 public:
  /// `count` outlives this object: the system tells of the last images when their surface may be gone.
  MetalDrawable(MetalDevice& device, id<CAMetalDrawable> drawable, const TextureDescriptor& descriptor,
                std::shared_ptr<MetalDrawableCount> count)
      : drawable_(drawable), texture_(device, descriptor, drawable.texture), count_(std::move(count)) {}

  const Texture& texture() const override { return texture_; }
  bool presented() const { return presented_; }

  /// Has it shown when `commands` are done.
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

}  // namespace veloria::gpu::metal
