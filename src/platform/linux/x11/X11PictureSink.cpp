#include "platform/linux/x11/X11PictureSink.h"

#include <algorithm>

#include "platform/linux/x11/X11Connection.h"

namespace veloria {

std::uint8_t windowDepth(xcb_connection_t* connection, xcb_window_t window) {
  const XcbPtr<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
  return geometry ? geometry->depth : std::uint8_t{0};
}

X11PictureSink::X11PictureSink(xcb_connection_t* connection, xcb_window_t window, std::uint8_t depth)
    : connection_(connection), window_(window), depth_(depth), context_(xcb_generate_id(connection)) {
  xcb_create_gc(connection_, context_, window_, 0, nullptr);
}

X11PictureSink::~X11PictureSink() {
  xcb_free_gc(connection_, context_);
  xcb_flush(connection_);
}

void X11PictureSink::put(std::span<const std::byte> rows, std::uint32_t width, std::uint32_t height) {
  const std::size_t rowBytes = std::size_t{width} * 4;
  if (rowBytes == 0 || rows.size() < rowBytes * height) return;
  const std::size_t longest = std::size_t{xcb_get_maximum_request_length(connection_)} * 4;
  const std::size_t header = sizeof(xcb_put_image_request_t) + 4;
  if (longest < header + rowBytes) return;
  const auto rowsAtOnce = static_cast<std::uint32_t>(std::min<std::size_t>((longest - header) / rowBytes, height));
  for (std::uint32_t y = 0; y < height; y += rowsAtOnce) {
    const std::uint32_t count = std::min(rowsAtOnce, height - y);
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_, static_cast<std::uint16_t>(width),
                  static_cast<std::uint16_t>(count), 0, static_cast<std::int16_t>(y), 0, depth_,
                  static_cast<std::uint32_t>(rowBytes * count),
                  reinterpret_cast<const std::uint8_t*>(rows.data()) + rowBytes * y);
  }
  xcb_flush(connection_);
}

}  // namespace veloria
