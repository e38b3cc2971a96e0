#pragma once

#include <cstddef>

#include "gpu/Types.h"

namespace veloria::gpu {

/// One picture's memory, which a display server reads: 4 bytes a pixel (blue, green, red, alpha; premultiplied), top
/// row first.
struct PictureBuffer {
  std::byte* pixels = nullptr;
  std::size_t rowBytes = 0;  ///< at least 4 x width, a multiple of 4
  Size size;
};

/// The pictures of one native window, for a device that draws into memory. Destroyed by the surface that owns it, on
/// the main thread, before the window, and after the last call of the others has returned; pictures may still be
/// acquired.
class PictureBuffers {
 public:
  virtual ~PictureBuffers() = default;
  PictureBuffers(const PictureBuffers&) = delete;
  PictureBuffers& operator=(const PictureBuffers&) = delete;

  /// A picture that nobody reads, its content undefined. It stays acquired until show() or giveBack(). nullptr while
  /// all of the two or three there can be are acquired or with the server, once the window or the server is known to be
  /// gone (which a show() finds out), if memory runs out, and for a size that no texture can have. Pictures of another
  /// size end when they are free. Main thread; never waits for the server.
  virtual PictureBuffer* acquire(Size size) = 0;

  /// Puts an acquired picture into the window as a whole, and ends its acquisition. One thread at a time, the device's,
  /// in the order of presenting; never waits for the server and does not throw.
  virtual void show(PictureBuffer& picture) = 0;

  /// Ends the acquisition of a picture that will not be shown. Any thread.
  virtual void giveBack(PictureBuffer& picture) = 0;

 protected:
  PictureBuffers() = default;
};

}  // namespace veloria::gpu
