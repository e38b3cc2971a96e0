#pragma once

#include <xcb/shm.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/linux/pictures/SharedMemory.h"
#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/x11/X11Connection.h"

namespace veloria {

/// Reads pixels of drawables of depth 24 or 32: through shared memory if the server takes its file descriptor, else
/// through the connection. Main thread; the connection must outlive it.
class X11ImageReader {
 public:
  /// One request under way.
  struct Request {
    PixelRect area;
    bool shared = false;
    xcb_shm_get_image_cookie_t sharedCookie{};
    xcb_get_image_cookie_t wireCookie{};
  };

  explicit X11ImageReader(X11Connection& connection);
  ~X11ImageReader();
  X11ImageReader(const X11ImageReader&) = delete;
  X11ImageReader& operator=(const X11ImageReader&) = delete;

  /// Whether the server's pixels are as collect() promises: 32 bits each, blue in the first byte.
  bool understandsPixels() const;
  bool usesSharedMemory() const { return shm_; }

  /// Asks for `area` (not empty) of `drawable`, in its own coordinates, without waiting. Each request is collected
  /// before the next is made.
  Request request(xcb_drawable_t drawable, const PixelRect& area);
  /// Waits for it: `pixels` becomes the area, tightly packed from the top, blue, green, red, and a fourth byte that is
  /// alpha in depth 32. False, with nothing changed, if the server refused: the drawable is gone or smaller.
  bool collect(const Request& request, std::vector<std::byte>& pixels);

 private:
  bool holdSegment(std::size_t bytes);
  bool collectShared(const Request& request, std::vector<std::byte>& pixels);
  bool collectFromWire(const Request& request, std::vector<std::byte>& pixels);

  X11Connection& connection_;
  bool shm_ = false;
  xcb_shm_seg_t segment_ = XCB_NONE;
  SharedMemory memory_;
};

}  // namespace veloria
