#pragma once

#include <memory>

#include "ports/DesktopPicture.h"

namespace veloria {

/// The desktop's picture, as the workspace reports it for the screen with that number. Decoded on a queue of its own;
/// the main thread waits neither for the disk nor for a decoder. Needs no permission; a picture in a folder that this
/// program may not read counts as none. Main thread.
class MacDesktopPicture final : public DesktopPicture {
 public:
  MacDesktopPicture();
  ~MacDesktopPicture() override;

  void thumbnail(const Screen& screen, Answer answer) override;

 private:
  struct Worker;

  void finish(Result<Pixels> pixels);

  std::shared_ptr<Worker> worker_;
  std::shared_ptr<MacDesktopPicture*> self_;  ///< expires with this object; posted functions check it
  Answer answer_;
};

}  // namespace veloria
