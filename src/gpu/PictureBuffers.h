#pragma once

#include <cstddef>

#include "gpu/Types.h"

namespace veloria::gpu {

/// One picture's memory, which a display server reads: 4 bytes a pixel (blue, green, red, alpha; premultiplied), top row
/// first.
struct PictureBuffer {
  std::byte* pixels = nullptr;
  std::size_t rowBytes = 0;  ///< at least 4 x width, a multiple of 4
  Size size;
};

/// The pictures of one native window, for a device that draws into memory.
class PictureBuffers {
 public:
  virtual ~PictureBuffers() = default;
  PictureBuffers(const PictureBuffers&) = delete;
  PictureBuffers& operator=(const PictureBuffers&) = delete;

  /// A picture that nobody reads, its content undefined, or nullptr while the server still has all of them or the window
  /// is gone. It stays acquired until show() or giveBack(). A new size ends the buffers of the old one when they are
  /// free. Main thread; never waits.
  virtual PictureBuffer* acquire(Size size) = 0;

  /// Puts an acquired picture into the window as a whole. Called on the device's thread, in the order of presenting;
  /// never waits for the server, and must not throw.
  virtual void show(PictureBuffer& picture) = 0;

  /// Ends the acquisition of a picture that will not be shown. Any thread.
  virtual void giveBack(PictureBuffer& picture) = 0;

 protected:
  PictureBuffers() = default;
};

}  // namespace veloria::gpu
