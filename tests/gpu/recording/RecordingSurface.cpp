#include "gpu/recording/RecordingSurface.h"

#include "gpu/Precondition.h"
#include "gpu/recording/RecordingDevice.h"
#include "gpu/recording/RecordingTexture.h"

namespace veloria::gpu::recording {

void RecordingDrawable::presented() {
  require(surface_.taken_ && surface_.drawable_.get() == this, "present: the drawable is not taken");
  surface_.taken_ = false;
  ++surface_.presentCount_;
}

RecordingSurface::RecordingSurface(RecordingDevice& device) : device_(device) {}

RecordingSurface::~RecordingSurface() = default;

void RecordingSurface::configure(Size size, PixelFormat wanted) {
  size_ = size;
  wanted_ = wanted;
}

PixelFormat RecordingSurface::format() const {
  const bool asWanted = wanted_ == PixelFormat::rgba16Float || wanted_ == PixelFormat::invalid;
  return asWanted ? wanted_ : PixelFormat::bgra8Unorm;
}

Drawable* RecordingSurface::nextDrawable() {
  const bool drawable = available_ && !device_.lost() && size_.width > 0 && size_.height > 0;
  if (!drawable || format() == PixelFormat::invalid) return nullptr;
  if (taken_) return drawable_.get();
  const TextureDescriptor descriptor{format(), size_, TextureUsage::renderTarget, StorageMode::gpuPrivate, "drawable"};
  const bool fits = drawable_ != nullptr && drawable_->texture().size() == size_ &&
                    drawable_->texture().format() == descriptor.format;
  if (!fits) {
    drawable_ = std::make_unique<RecordingDrawable>(*this, std::make_shared<RecordingTexture>(device_, descriptor));
  }
  taken_ = true;
  return drawable_.get();
}

}  // namespace veloria::gpu::recording
