#include "platform/linux/x11/X11ImageReader.h"

#include <utility>

#include "platform/linux/x11/X11SharedMemory.h"

namespace veloria {

namespace {

constexpr std::uint32_t allPlanes = 0xFFFFFFFFU;
constexpr std::size_t bytesPerPixel = 4;

std::size_t byteCount(const PixelRect& area) {
  return static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) * bytesPerPixel;
}

}  // namespace

X11ImageReader::X11ImageReader(X11Connection& connection)
    : connection_(connection), shm_(takesSharedMemory(connection)) {}

X11ImageReader::~X11ImageReader() {
  detachMemory(connection_, segment_);
}

bool X11ImageReader::understandsPixels() const {
  return hasPlainPixels(connection_, 24) && hasPlainPixels(connection_, 32);
}

bool X11ImageReader::holdSegment(std::size_t bytes) {
  if (segment_ != XCB_NONE && memory_.size() >= bytes) return true;
  detachMemory(connection_, std::exchange(segment_, xcb_shm_seg_t{XCB_NONE}));
  memory_ = SharedMemory(bytes);
  if (memory_) segment_ = attachMemory(connection_, memory_, false);
  return segment_ != XCB_NONE;
}

X11ImageReader::Request X11ImageReader::request(xcb_drawable_t drawable, const PixelRect& area) {
  Request request{.area = area};
  if (shm_ && !holdSegment(byteCount(area))) shm_ = false;
  request.shared = shm_;
  const auto x = static_cast<std::int16_t>(area.x);
  const auto y = static_cast<std::int16_t>(area.y);
  const auto width = static_cast<std::uint16_t>(area.width);
  const auto height = static_cast<std::uint16_t>(area.height);
  if (shm_) {
    request.sharedCookie = xcb_shm_get_image(connection_.raw(), drawable, x, y, width, height, allPlanes,
                                             XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, 0);
  } else {
    request.wireCookie =
        xcb_get_image(connection_.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, x, y, width, height, allPlanes);
  }
  return request;
}

bool X11ImageReader::collect(const Request& request, std::vector<std::byte>& pixels) {
  return request.shared ? collectShared(request, pixels) : collectFromWire(request, pixels);
}

bool X11ImageReader::collectShared(const Request& request, std::vector<std::byte>& pixels) {
  const auto image = connection_.reply(xcb_shm_get_image_reply, request.sharedCookie);
  if (!image || !isPlainDepth(image->depth)) return false;
  pixels.assign(memory_.bytes(), memory_.bytes() + byteCount(request.area));
  return true;
}

bool X11ImageReader::collectFromWire(const Request& request, std::vector<std::byte>& pixels) {
  const auto image = connection_.reply(xcb_get_image_reply, request.wireCookie);
  if (!image || !isPlainDepth(image->depth)) return false;
  const std::size_t bytes = byteCount(request.area);
  if (static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < bytes) return false;
  const auto* data = reinterpret_cast<const std::byte*>(xcb_get_image_data(image.get()));
  pixels.assign(data, data + bytes);
  return true;
}

}  // namespace veloria
