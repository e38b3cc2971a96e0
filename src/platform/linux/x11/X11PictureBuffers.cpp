#include "platform/linux/x11/X11PictureBuffers.h"

#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <memory>
#include <stdexcept>

#include "platform/linux/x11/X11SharedMemory.h"

namespace veloria {

namespace {

constexpr std::size_t mostPictures = 2;  // one being drawn, one on its way
constexpr std::size_t wordBytes = 4;
constexpr std::size_t requestHeader = sizeof(xcb_put_image_request_t) + wordBytes;

// A server that goes away must not end the program.
void blockBrokenPipes() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool saysThatTheWindowIsGone(const xcb_generic_error_t& error) {
  return error.error_code == XCB_WINDOW || error.error_code == XCB_DRAWABLE;
}

}  // namespace

X11PictureBuffers::Picture::~Picture() {
  detachMemory(client, segment);
}

X11PictureBuffers::X11PictureBuffers(const std::string& displayName, xcb_window_t window)
    : client_(displayName), window_(window), pictures_(mostPictures) {
  const auto geometry = client_.reply(xcb_get_geometry_reply, xcb_get_geometry(client_.raw(), window_));
  gone_ = !geometry;
  if (!geometry) return;
  depth_ = geometry->depth;
  if (!hasPlainPixels(client_, depth_)) {
    throw std::runtime_error("The X server's pixels are not of 32 bits, blue first, which is all that can be drawn.");
  }
  shared_ = takesSharedMemory(client_);
  shown_.reserve(mostPictures);
  context_ = xcb_generate_id(client_.raw());
  xcb_create_gc(client_.raw(), context_, window_, 0, nullptr);
  thread_ = std::thread([this] { run(); });
}

X11PictureBuffers::~X11PictureBuffers() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  work_.notify_one();
  ::shutdown(xcb_get_file_descriptor(client_.raw()), SHUT_RDWR);  // ends a wait for the server
  thread_.join();
}

gpu::PictureBuffer* X11PictureBuffers::acquire(gpu::Size size) {
  if (gone_) return nullptr;
  return pictures_.acquire(size, [this](gpu::Size wanted) { return std::make_unique<Picture>(client_, wanted); });
}

void X11PictureBuffers::show(gpu::PictureBuffer& picture) {
  {
    const std::lock_guard lock(mutex_);
    shown_.push_back(static_cast<Picture*>(&picture));
  }
  work_.notify_one();
}

void X11PictureBuffers::giveBack(gpu::PictureBuffer& picture) {
  static_cast<Picture&>(picture).free = true;
}

void X11PictureBuffers::run() {
  blockBrokenPipes();
  while (!gone_) {
    std::unique_lock lock(mutex_);
    work_.wait(lock, [this] { return stopping_ || !shown_.empty(); });
    if (stopping_) return;
    Picture& picture = *shown_.front();
    shown_.erase(shown_.begin());
    lock.unlock();
    gone_ = !put(picture);
    picture.free = true;
  }
}

bool X11PictureBuffers::put(Picture& picture) {
  if (shared_ && picture.segment == XCB_NONE) {
    picture.segment = attachMemory(client_, picture.memory, true);
    shared_ = picture.segment != XCB_NONE;
  }
  const auto cookie = shared_ ? putShared(picture) : putRows(picture);
  // The server has read the picture when it answers.
  const XcbPtr<xcb_generic_error_t> error(xcb_request_check(client_.raw(), cookie));
  while (const XcbPtr<xcb_generic_event_t> unused{xcb_poll_for_queued_event(client_.raw())}) {
  }
  return !client_.isBroken() && !(error && saysThatTheWindowIsGone(*error));
}

xcb_void_cookie_t X11PictureBuffers::putShared(const Picture& picture) {
  const auto width = static_cast<std::uint16_t>(picture.size.width);
  const auto height = static_cast<std::uint16_t>(picture.size.height);
  return xcb_shm_put_image_checked(client_.raw(), window_, context_, width, height, 0, 0, width, height, 0, 0, depth_,
                                   XCB_IMAGE_FORMAT_Z_PIXMAP, 0, picture.segment, 0);
}

xcb_void_cookie_t X11PictureBuffers::putRows(const Picture& picture) {
  const std::size_t longest = std::size_t{xcb_get_maximum_request_length(client_.raw())} * wordBytes;
  if (longest < requestHeader + picture.rowBytes) return {};
  const auto rowsAtOnce = static_cast<std::uint32_t>((longest - requestHeader) / picture.rowBytes);
  xcb_void_cookie_t last{};
  for (std::uint32_t y = 0; y < picture.size.height; y += rowsAtOnce) {
    const std::uint32_t rows = std::min(rowsAtOnce, picture.size.height - y);
    const auto request = y + rows == picture.size.height ? xcb_put_image_checked : xcb_put_image;
    last = request(client_.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_,
                   static_cast<std::uint16_t>(picture.size.width), static_cast<std::uint16_t>(rows), 0,
                   static_cast<std::int16_t>(y), 0, depth_, static_cast<std::uint32_t>(picture.rowBytes * rows),
                   reinterpret_cast<const std::uint8_t*>(picture.pixels) + picture.rowBytes * y);
  }
  return last;
}

}  // namespace veloria
