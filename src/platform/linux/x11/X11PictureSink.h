#pragma once

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace veloria {

/// The depth of a window in bits; 0 if it is gone. One round trip.
std::uint8_t windowDepth(xcb_connection_t* connection, xcb_window_t window);

/// Puts pictures into a window of depth 24 or 32 through the X protocol, for drivers that can't present into it
/// themselves. Any one thread at a time; the connection must outlive it. A window that is gone is not an error.
class X11PictureSink {
 public:
  X11PictureSink(xcb_connection_t* connection, xcb_window_t window, std::uint8_t depth);
  ~X11PictureSink();
  X11PictureSink(const X11PictureSink&) = delete;
  X11PictureSink& operator=(const X11PictureSink&) = delete;

  /// `rows`: width x height pixels of 4 bytes (blue, green, red, alpha), tightly packed, from the top. Sent in pieces
  /// if it is longer than the server's longest request.
  void put(std::span<const std::byte> rows, std::uint32_t width, std::uint32_t height);

 private:
  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::uint8_t depth_;
  xcb_gcontext_t context_;
};

}  // namespace veloria
