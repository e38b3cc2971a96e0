#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "base/Geometry.h"
#include "gpu/Texture.h"
#include "gpu/Types.h"

namespace veloria {

/// The part of a screen that is captured.
struct BarRegion {
  std::uint32_t displayID = 0;  ///< Screen::number
  Rect rect;                    ///< points from the screen's top left corner, y growing downwards
  double scale = 1;             ///< pixels per point
  bool operator==(const BarRegion&) const = default;
};

/// One picture of the menu bar without our own windows.
struct BarPicture {
  gpu::Size size;
  /// Tightly packed rows from the top, four bytes a pixel (blue, green, red, alpha), sRGB encoded and premultiplied.
  /// Anything beside the bar has too little contrast to be mistaken for text. Valid during the call only.
  std::span<const std::byte> rows;
};

/// What a stream reports. None of them is called after stop(); each of them may call stop().
struct BarCaptureHandlers {
  std::function<void(gpu::Size)> started;  ///< once, before the first picture: the pictures' size
  std::function<void(const BarPicture&)> picture;
  /// Called instead of `picture` if the system's pictures are textures already: bgra8Unorm, readable by shaders, of the
  /// renderers' device, with colours as in BarPicture. Releasing the texture may return its memory to the system.
  std::function<void(std::shared_ptr<gpu::Texture>)> texture = {};
  std::function<void(const std::string&)> failed;  ///< a sentence for a person; the stream has stopped
};

/// Port: captures the menu bar. Main thread.
class BarCaptureStream {
 public:
  virtual ~BarCaptureStream() = default;
  /// Captures `region`: a picture at once or soon, then one whenever the bar has changed, at most 30 a second. Stops a
  /// previous capture. The handlers may be called from inside. An unknown display means the first one.
  virtual void start(const BarRegion& region, BarCaptureHandlers handlers) = 0;
  /// No effect if it isn't running.
  virtual void stop() = 0;
};

}  // namespace veloria
