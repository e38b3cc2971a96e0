#pragma once

#include <memory>
#include <mutex>

#include "gpu/Texture.h"

namespace veloria {

/// Hands the newest picture of the menu bar from the capture to a renderer. Any thread.
class TextureBox {
 public:
  void store(std::shared_ptr<gpu::Texture> texture) {
    const std::lock_guard guard(lock_);
    stored_.swap(texture);
  }

  std::shared_ptr<gpu::Texture> stored() const {
    const std::lock_guard guard(lock_);
    return stored_;
  }

 private:
  mutable std::mutex lock_;
  std::shared_ptr<gpu::Texture> stored_;
};

}  // namespace veloria
