#include "gpu/cpu/CpuSurface.h"

#include <utility>

#include "gpu/cpu/CpuDevice.h"

namespace veloria::gpu::cpu {

CpuDrawable::CpuDrawable(CpuDevice& device, PictureBuffers& buffers, PictureBuffer& picture)
    : buffers_(buffers),
      picture_(picture),
      made_(picture),
      texture_(device,
               {.format = PixelFormat::bgra8Unorm,
                .size = picture.size,
                .usage = TextureUsage::renderTarget,
                .storage = StorageMode::shared,
                .label = "picture"},
               picture) {}

bool CpuDrawable::isOf(const PictureBuffer& picture) const {
  return &picture == &picture_ && picture.pixels == made_.pixels && picture.rowBytes == made_.rowBytes &&
         picture.size == made_.size;
}

CpuSurface::CpuSurface(CpuDevice& device, std::unique_ptr<PictureBuffers> buffers)
    : device_(device), buffers_(std::move(buffers)) {}

CpuSurface::~CpuSurface() {
  device_.waitIdle();
  giveBack();
}

void CpuSurface::giveBack() {
  if (acquired_ != nullptr && !acquired_->isCommitted()) acquired_->giveBack();
  acquired_ = nullptr;
}

void CpuSurface::configure(Size size, PixelFormat) {
  if (size == size_) return;
  giveBack();
  size_ = size;
}

CpuDrawable& CpuSurface::drawableOf(PictureBuffer& picture) {
  for (const auto& drawable : drawables_) {
    if (drawable != nullptr && drawable->isOf(picture)) return *drawable;
  }
  // One that makes room may still be in a frame.
  if (drawables_[oldest_] != nullptr) device_.waitIdle();
  auto& room = drawables_[oldest_];
  oldest_ = (oldest_ + 1) % drawables_.size();
  room = std::make_unique<CpuDrawable>(device_, *buffers_, picture);
  return *room;
}

Drawable* CpuSurface::nextDrawable() {
  if (acquired_ != nullptr && !acquired_->isCommitted()) return acquired_;
  acquired_ = nullptr;
  if (size_.width == 0 || size_.height == 0) return nullptr;
  PictureBuffer* picture = buffers_->acquire(size_);
  if (picture == nullptr) return nullptr;
  acquired_ = &drawableOf(*picture);
  acquired_->acquire();
  return acquired_;
}

}  // namespace veloria::gpu::cpu
