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

  /// Looks up what the desktop of `screen` shows now. `answer` (not empty) is called once on the main thread, inside
  /// this call or later, but never after this object is gone; it may ask again or destroy the object. Where there
  /// is no picture, where it is not known and where it can't be read, the failure says so to a person. One request is
  /// under way at most: while it is, a further one is dropped and its `answer` is never called.
  virtual void thumbnail(const Screen& screen, Answer answer) = 0;

 protected:
  DesktopPicture() = default;
};

}  // namespace veloria
