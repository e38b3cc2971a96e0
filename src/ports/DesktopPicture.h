#pragma once

#include <functional>
#include <vector>

#include "base/Color.h"
#include "base/Result.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// Port: the picture on the desktop, reduced to a thumbnail. Main thread.
class DesktopPicture {
 public:
  /// The width and height of a thumbnail in pixels, whatever the picture's proportions are.
  static constexpr int side = 48;

  /// side x side pixels, rows from the top, encoded sRGB, each component 0 to 1.
  using Pixels = std::vector<ColorStop>;
  using Answer = std::function<void(Result<Pixels>)>;

  virtual ~DesktopPicture() = default;
  DesktopPicture(const DesktopPicture&) = delete;
  DesktopPicture& operator=(const DesktopPicture&) = delete;

  /// Reads the current picture on the desktop of `screen`. `answer` (not empty) is called once on the main thread,
  /// inside this call or later, but never after this object is destroyed; it may ask again or destroy the object. If
  /// there is no picture, or it is unknown or unreadable, the failure says so, for people. While a request is running,
  /// further ones are dropped and their `answer` is never called.
  virtual void thumbnail(const Screen& screen, Answer answer) = 0;

 protected:
  DesktopPicture() = default;
};

}  // namespace veloria
