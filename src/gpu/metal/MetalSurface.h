#pragma once

#import <QuartzCore/QuartzCore.h>

#include <memory>
#include <optional>

#include "gpu/Surface.h"
#include "gpu/metal/MetalDrawable.h"

namespace veloria::gpu::metal {

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
