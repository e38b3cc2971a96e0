#pragma once

#include <array>
#include <memory>

#include "gpu/PictureBuffers.h"
#include "gpu/Surface.h"
#include "gpu/cpu/CpuTexture.h"

namespace veloria::gpu::cpu {

/// A picture of a window's, from its acquisition until it is shown.
class CpuDrawable final : public Drawable {
 public:
  CpuDrawable(CpuDevice& device, PictureBuffers& buffers, PictureBuffer& picture);

  const Texture& texture() const override { return texture_; }
  bool isOf(const PictureBuffer& picture) const;
  /// Its frame is on its way. On the thread that draws.
  void committed() { committed_ = true; }
  bool isCommitted() const { return committed_; }
  void acquire() { committed_ = false; }
  /// On the device's thread.
  void show() { buffers_.show(picture_); }
  void giveBack() { buffers_.giveBack(picture_); }

 private:
  PictureBuffers& buffers_;
  PictureBuffer& picture_;
  PictureBuffer made_;  ///< what the picture was like
  CpuTexture texture_;
  bool committed_ = false;
};

class CpuSurface final : public Surface {
 public:
  CpuSurface(CpuDevice& device, std::unique_ptr<PictureBuffers> buffers);
  ~CpuSurface() override;

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override { return PixelFormat::bgra8Unorm; }
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

 private:
  CpuDrawable& drawableOf(PictureBuffer& picture);
  void giveBack();

  CpuDevice& device_;
  std::unique_ptr<PictureBuffers> buffers_;
  Size size_;
  std::array<std::unique_ptr<CpuDrawable>, 4> drawables_;
  std::size_t oldest_ = 0;
  CpuDrawable* acquired_ = nullptr;
};

}  // namespace veloria::gpu::cpu
