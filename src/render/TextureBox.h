#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "gpu/Texture.h"

namespace veloria {

/// Hands the newest picture of the menu bar from the capture to a renderer. Any thread.
class TextureBox {
 public:
  void store(std::shared_ptr<gpu::Texture> texture) {
    const std::lock_guard guard(lock_);
    stored_.swap(texture);
    ++number_;
  }

  std::shared_ptr<gpu::Texture> stored() const {
    const std::lock_guard guard(lock_);
    return stored_;
  }

  /// With a number that tells it from all earlier pictures, which may have been in the same texture.
  std::pair<std::shared_ptr<gpu::Texture>, std::uint64_t> numbered() const {
    const std::lock_guard guard(lock_);
    return {stored_, number_};
  }

 private:
  mutable std::mutex lock_;
  std::shared_ptr<gpu::Texture> stored_;
  std::uint64_t number_ = 0;
};

}  // namespace veloria
