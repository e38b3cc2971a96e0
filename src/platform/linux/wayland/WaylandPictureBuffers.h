#pragma once

#include "gpu/PictureBuffers.h"
#include "platform/linux/pictures/PictureRing.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace veloria {

/// The pictures of a surface, in memory that the compositor reads. show() commits the surface, with all that was asked
/// of it before: a wl_surface_frame too, if nothing else commits after acquire().
class WaylandPictureBuffers final : public gpu::PictureBuffers {
 public:
  /// Both must outlive it. Throws std::runtime_error if the compositor takes no pictures from memory.
  WaylandPictureBuffers(WaylandConnection& connection, wl_surface* surface);

  gpu::PictureBuffer* acquire(gpu::Size size) override;
  void show(gpu::PictureBuffer& picture) override;
  void giveBack(gpu::PictureBuffer& picture) override;

 private:
  struct Picture final : SharedPicture {
    Picture(wl_shm* shm, gpu::Size wanted);
    static const wl_buffer_listener listener;
    WaylandPtr<wl_buffer> buffer;
  };

  WaylandConnection& connection_;
  wl_display* display_;
  wl_surface* surface_;
  PictureRing<Picture> pictures_;
};

}  // namespace veloria
