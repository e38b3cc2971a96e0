#include "platform/linux/wayland/WaylandPictureBuffers.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>

namespace veloria {

namespace {

constexpr std::size_t mostPictures = 3;  // one being drawn, one waiting, one shown
constexpr std::int32_t wholeLength = std::numeric_limits<std::int32_t>::max();

}  // namespace

const wl_buffer_listener WaylandPictureBuffers::Picture::listener = {
    .release = [](void* data, wl_buffer*) { static_cast<Picture*>(data)->free = true; }};

WaylandPictureBuffers::Picture::Picture(wl_shm* shm, gpu::Size wanted) : SharedPicture(wanted) {
  if (!memory) return;
  const auto bytes = static_cast<std::int32_t>(memory.size());
  const WaylandPtr<wl_shm_pool> pool(wl_shm_create_pool(shm, memory.descriptor(), bytes));
  buffer.reset(wl_shm_pool_create_buffer(pool.get(), 0, static_cast<std::int32_t>(size.width),
                                         static_cast<std::int32_t>(size.height), static_cast<std::int32_t>(rowBytes),
                                         WL_SHM_FORMAT_ARGB8888));
  wl_buffer_add_listener(buffer.get(), &listener, this);
}

WaylandPictureBuffers::WaylandPictureBuffers(WaylandConnection& connection, wl_surface* surface)
    : connection_(connection), display_(connection.raw()), surface_(surface), pictures_(mostPictures) {
  if (connection.shm() == nullptr) throw std::runtime_error("The Wayland compositor takes no pictures from memory.");
}

gpu::PictureBuffer* WaylandPictureBuffers::acquire(gpu::Size size) {
  if (connection_.isBroken()) return nullptr;
  return pictures_.acquire(size,
                           [this](gpu::Size wanted) { return std::make_unique<Picture>(connection_.shm(), wanted); });
}

void WaylandPictureBuffers::show(gpu::PictureBuffer& picture) {
  wl_surface_attach(surface_, static_cast<Picture&>(picture).buffer.get(), 0, 0);
  wl_surface_damage(surface_, 0, 0, wholeLength, wholeLength);
  wl_surface_commit(surface_);
  wl_display_flush(display_);
}

void WaylandPictureBuffers::giveBack(gpu::PictureBuffer& picture) {
  static_cast<Picture&>(picture).free = true;
}

}  // namespace veloria
