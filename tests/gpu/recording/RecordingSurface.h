#pragma once

#include <cstddef>
#include <memory>

#include "gpu/Surface.h"

namespace veloria::gpu::recording {

class RecordingDevice;
class RecordingSurface;

class RecordingDrawable final : public Drawable {
 public:
  RecordingDrawable(RecordingSurface& surface, std::shared_ptr<Texture> texture)
      : surface_(surface), texture_(std::move(texture)) {}
  const Texture& texture() const override { return *texture_; }
  void presented();

 private:
  RecordingSurface& surface_;
  std::shared_ptr<Texture> texture_;
};

/// A window that exists only in the test: one drawable at a time, taken until it is presented.
class RecordingSurface final : public Surface {
 public:
  explicit RecordingSurface(RecordingDevice& device);
  ~RecordingSurface() override;

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override;
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

  /// Without images nextDrawable() gives nullptr.
  void setAvailable(bool on) { available_ = on; }
  std::size_t presentCount() const { return presentCount_; }
  PixelFormat wanted() const { return wanted_; }

 private:
  friend class RecordingDrawable;

  RecordingDevice& device_;
  std::unique_ptr<RecordingDrawable> drawable_;
  bool taken_ = false;
  Size size_;
  PixelFormat wanted_ = PixelFormat::invalid;
  bool available_ = true;
  std::size_t presentCount_ = 0;
};

}  // namespace veloria::gpu::recording
