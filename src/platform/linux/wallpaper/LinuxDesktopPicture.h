#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Environment.h"
#include "ports/DesktopPicture.h"

namespace veloria {

/// The desktop's picture on Linux: from the settings of the desktop in use, or from the X root window. Each request
/// runs on a thread of its own with low priority; the main thread never waits for the disk, for other programs or for a
/// decoder. The screen's name selects the monitor.
class LinuxDesktopPicture final : public DesktopPicture {
 public:
  /// Runs a function on the main thread, later. Called from any thread, but not after this object is gone; must not
  /// wait for the main thread or throw, and may drop the function if the main loop has ended.
  using PostToMain = std::function<void(std::function<void()>)>;

  /// The environment is read here and not again. `decoder`: the program that decodes picture files (PictureDecoder.h).
  LinuxDesktopPicture(const Environment& environment, const std::string& decoder, PostToMain postToMain);
  /// Waits a second at most for a thread that still runs; a hanging one (on a lost network share, say) is left behind
  /// and touches neither this object nor `postToMain`.
  ~LinuxDesktopPicture() override;

  void thumbnail(const Screen& screen, Answer answer) override;

 private:
  struct Loader;
  struct Request;

  void finish(Result<Pixels> pixels);

  std::shared_ptr<Loader> loader_;
  std::shared_ptr<Request> request_;
  std::shared_ptr<LinuxDesktopPicture*> self_;  ///< ends with this object; posted functions check it
  Answer answer_;
};

}  // namespace veloria
