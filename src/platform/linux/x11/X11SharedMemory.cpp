#include "platform/linux/x11/X11SharedMemory.h"

#include <fcntl.h>
#include <sys/socket.h>

namespace veloria {

namespace {

constexpr std::uint8_t bitsPerPixel = 32;

// Handing a descriptor to a server that is not on this machine would end the connection.
bool isLocal(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof(address);
  return ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 && address.ss_family == AF_UNIX;
}

}  // namespace

bool takesSharedMemory(X11Client& client) {
  if (!isLocal(xcb_get_file_descriptor(client.raw())) || !client.extension(&xcb_shm_id).present) return false;
  return atLeast(client.reply(xcb_shm_query_version_reply, xcb_shm_query_version(client.raw())), 1, 2);
}

xcb_shm_seg_t attachMemory(X11Client& client, const SharedMemory& memory, bool readOnly) {
  // The library closes the descriptor.
  const int descriptor = ::fcntl(memory.descriptor(), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) return XCB_NONE;
  const xcb_shm_seg_t segment = xcb_generate_id(client.raw());
  const auto cookie = xcb_shm_attach_fd_checked(client.raw(), segment, descriptor, readOnly ? 1 : 0);
  const XcbPtr<xcb_generic_error_t> error(xcb_request_check(client.raw(), cookie));
  return error || client.isBroken() ? xcb_shm_seg_t{XCB_NONE} : segment;
}

void detachMemory(X11Client& client, xcb_shm_seg_t segment) {
  if (segment == XCB_NONE) return;
  xcb_discard_reply(client.raw(), xcb_shm_detach_checked(client.raw(), segment).sequence);
}

bool hasPlainPixels(X11Client& client, std::uint8_t depth) {
  const auto* setup = xcb_get_setup(client.raw());
  if (!isPlainDepth(depth) || setup == nullptr || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
  for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it)) {
    if (it.data->depth == depth && it.data->bits_per_pixel != bitsPerPixel) return false;
  }
  return true;
}

}  // namespace veloria
