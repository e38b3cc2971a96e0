#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "gpu/PictureBuffers.h"
#include "platform/linux/pictures/SharedMemory.h"

namespace veloria {

/// A picture in shared memory, its rows tightly packed.
struct SharedPicture : gpu::PictureBuffer {
  /// `memory` is empty if there is none, or the size is none that a picture can have.
  explicit SharedPicture(gpu::Size wanted) {
    const bool possible = wanted.width <= gpu::maxTextureLength && wanted.height <= gpu::maxTextureLength;
    if (possible) memory = SharedMemory(std::size_t{4} * wanted.width * wanted.height);
    pixels = memory.bytes();
    rowBytes = std::size_t{4} * wanted.width;
    size = wanted;
  }

  SharedMemory memory;
  std::atomic<bool> free{false};  ///< neither acquired nor read by the display server; set on any thread
};

/// The pictures of one window. `Picture` derives from SharedPicture; its destructor takes it from the display server.
/// One thread.
template <typename Picture>
class PictureRing {
 public:
  /// `most`: pictures at a time.
  explicit PictureRing(std::size_t most) : most_(most) {}

  /// A free picture, no longer free then; nullptr if there is none. `make(size)` makes another; it may return nullptr.
  template <typename Make>
  Picture* acquire(gpu::Size size, Make make) {
    std::erase_if(pictures_, [&](const auto& picture) { return picture->free && picture->size != size; });
    // One of another size may have become free since.
    const auto found = std::find_if(pictures_.begin(), pictures_.end(),
                                    [&](const auto& picture) { return picture->free && picture->size == size; });
    if (found != pictures_.end()) {
      (*found)->free = false;
      return found->get();
    }
    if (pictures_.size() >= most_) return nullptr;
    std::unique_ptr<Picture> made = make(size);
    if (!made || !made->memory) return nullptr;
    pictures_.push_back(std::move(made));
    return pictures_.back().get();
  }

 private:
  std::size_t most_;
  std::vector<std::unique_ptr<Picture>> pictures_;
};

}  // namespace veloria
