#include "platform/linux/x11/X11ImageReader.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace veloria {

namespace {

constexpr std::uint32_t allPlanes = 0xFFFFFFFFU;
constexpr std::size_t bytesPerPixel = 4;
constexpr std::uint8_t bitsPerPixel = 32;
constexpr std::uint8_t colorDepth = 24;
constexpr std::uint8_t alphaDepth = 32;

std::size_t byteCount(const PixelRect& area) {
  return static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height) * bytesPerPixel;
}

// Handing a descriptor to a server that is not on this machine would end the connection.
bool isLocal(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof(address);
  return ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 && address.ss_family == AF_UNIX;
}

bool readableDepth(std::uint8_t depth) {
  return depth == colorDepth || depth == alphaDepth;
}

}  // namespace

X11ImageReader::X11ImageReader(X11Connection& connection)
    : connection_(connection), shm_(isLocal(xcb_get_file_descriptor(connection.raw())) && serverTakesDescriptors()) {}

X11ImageReader::~X11ImageReader() {
  dropSegment();
}

bool X11ImageReader::serverTakesDescriptors() {
  const auto* extension = xcb_get_extension_data(connection_.raw(), &xcb_shm_id);
  if (extension == nullptr || extension->present == 0) return false;
  const auto version = connection_.reply(xcb_shm_query_version_reply, xcb_shm_query_version(connection_.raw()));
  return version && (version->major_version > 1 || (version->major_version == 1 && version->minor_version >= 2));
}

bool X11ImageReader::understandsPixels() const {
  const auto* setup = xcb_get_setup(connection_.raw());
  if (setup == nullptr || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
  auto it = xcb_setup_pixmap_formats_iterator(setup);
  for (; it.rem > 0; xcb_format_next(&it)) {
    if (readableDepth(it.data->depth) && it.data->bits_per_pixel != bitsPerPixel) return false;
  }
  return true;
}

bool X11ImageReader::holdSegment(std::size_t bytes) {
  if (segment_ != XCB_NONE && memoryBytes_ >= bytes) return true;
  dropSegment();
  const int descriptor = ::memfd_create("panel", MFD_CLOEXEC);
  if (descriptor < 0) return false;
  void* memory = MAP_FAILED;
  if (::ftruncate(descriptor, static_cast<off_t>(bytes)) == 0) {
    memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  }
  if (memory == MAP_FAILED) {
    ::close(descriptor);
    return false;
  }
  memory_ = static_cast<std::byte*>(memory);
  memoryBytes_ = bytes;
  segment_ = xcb_generate_id(connection_.raw());
  // The library closes the descriptor.
  const auto cookie = xcb_shm_attach_fd_checked(connection_.raw(), segment_, descriptor, 0);
  const XcbPtr<xcb_generic_error_t> error(xcb_request_check(connection_.raw(), cookie));
  if (error || connection_.isBroken()) dropSegment();
  return segment_ != XCB_NONE;
}

void X11ImageReader::dropSegment() {
  if (segment_ != XCB_NONE) {
    xcb_discard_reply(connection_.raw(), xcb_shm_detach_checked(connection_.raw(), segment_).sequence);
  }
  if (memory_ != nullptr) ::munmap(memory_, memoryBytes_);
  segment_ = XCB_NONE;
  memory_ = nullptr;
  memoryBytes_ = 0;
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
  if (!image || !readableDepth(image->depth)) return false;
  pixels.assign(memory_, memory_ + byteCount(request.area));
  return true;
}

bool X11ImageReader::collectFromWire(const Request& request, std::vector<std::byte>& pixels) {
  const auto image = connection_.reply(xcb_get_image_reply, request.wireCookie);
  if (!image || !readableDepth(image->depth)) return false;
  const std::size_t bytes = byteCount(request.area);
  if (static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < bytes) return false;
  const auto* data = reinterpret_cast<const std::byte*>(xcb_get_image_data(image.get()));
  pixels.assign(data, data + bytes);
  return true;
}

}  // namespace veloria
