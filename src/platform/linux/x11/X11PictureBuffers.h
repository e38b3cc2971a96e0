#pragma once

#include <xcb/shm.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "gpu/PictureBuffers.h"
#include "platform/linux/pictures/PictureRing.h"
#include "platform/linux/x11/X11Client.h"

namespace veloria {

/// The pictures of a window of depth 24 or 32: in memory that the server reads if it can (MIT-SHM), else sent to it.
/// A thread with a connection of its own waits for the server, which may be slow, hang or end.
class X11PictureBuffers final : public gpu::PictureBuffers {
 public:
  /// `displayName` as X11Client takes it. Throws std::runtime_error with a sentence for a person if the display can't
  /// be opened or has other pixels. A window that is gone is not an error. A few round trips.
  X11PictureBuffers(const std::string& displayName, xcb_window_t window);
  /// Drops what is not shown yet.
  ~X11PictureBuffers() override;

  gpu::PictureBuffer* acquire(gpu::Size size) override;
  void show(gpu::PictureBuffer& picture) override;
  void giveBack(gpu::PictureBuffer& picture) override;

  /// Whether the server reads the memory; it may still refuse that at the first show().
  bool usesSharedMemory() const { return shared_; }

 private:
  struct Picture final : SharedPicture {
    Picture(X11Client& server, gpu::Size wanted) : SharedPicture(wanted), client(server) {}
    ~Picture();
    X11Client& client;
    xcb_shm_seg_t segment = XCB_NONE;
  };

  void run();
  bool put(Picture& picture);
  xcb_void_cookie_t putShared(const Picture& picture);
  xcb_void_cookie_t putRows(const Picture& picture);

  X11Client client_;
  xcb_window_t window_;
  xcb_gcontext_t context_ = XCB_NONE;
  std::uint8_t depth_ = 0;
  std::atomic<bool> shared_{false};
  std::atomic<bool> gone_{false};  ///< the window or the server
  PictureRing<Picture> pictures_;

  std::mutex mutex_;
  std::condition_variable work_;
  std::vector<Picture*> shown_;  ///< in order; has room for all
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace veloria
