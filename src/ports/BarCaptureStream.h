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
  /// What is beside the bar has no contrast to it that could be taken for text. Valid during the call only.
  std::span<const std::byte> rows;
};

/// What a stream reports. None of them is called after stop(); each of them may call stop().
struct BarCaptureHandlers {
  std::function<void(gpu::Size)> started;  ///< once, before the first picture: the pictures' size
  std::function<void(const BarPicture&)> picture;
  /// Instead of `picture`, where the system's pictures are textures already: bgra8Unorm, read by shaders, of the device
  /// that the renderers draw with. What BarPicture says of the colours holds. The memory may be the system's, which
  /// gets it back when the texture is released.
  std::function<void(std::shared_ptr<gpu::Texture>)> texture = {};
  std::function<void(const std::string&)> failed;  ///< a sentence for a person; the stream has stopped
};

/// Port: captures the menu bar. Main thread.
class BarCaptureStream {
 public:
  virtual ~BarCaptureStream() = default;
  /// Captures `region`: a picture at once or soon, then one whenever the bar has changed, at most 30 a second. Ends
  /// what ran before. The handlers may be called from within. A display that is not there stands for the first one.
  virtual void start(const BarRegion& region, BarCaptureHandlers handlers) = 0;
  /// Nothing happens when it doesn't run.
  virtual void stop() = 0;
};

}  // namespace veloria
