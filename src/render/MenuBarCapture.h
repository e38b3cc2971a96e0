#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "render/CaptureSink.h"

namespace veloria {

/// Keeps the newest picture of the real menu bar in a box, from which renderers take the text that the band must not
/// cover. Main thread. The device and the stream must outlive it.
///
/// Idle, then running after start(), then idle again after stop() (with an empty box) or after a failure (with an empty
/// box and lastError()). Nothing is tried again by itself; the next start() does.
class MenuBarCapture {
 public:
  MenuBarCapture(gpu::Device& device, BarCaptureStream& stream);
  ~MenuBarCapture();
  MenuBarCapture(const MenuBarCapture&) = delete;
  MenuBarCapture& operator=(const MenuBarCapture&) = delete;

  /// Captures `rect` (points from the display's top left corner, y growing downwards) of the display, at `scale` pixels
  /// a point. Nothing happens when just that runs already.
  void start(std::uint32_t displayID, const Rect& rect, double scale);
  /// The box is empty when it returns.
  void stop();

  bool isRunning() const { return isRunning_; }
  /// Why the last start failed or the capture ended; nothing once a capture has started again.
  const std::optional<std::string>& lastError() const { return lastError_; }
  const Rect& currentRect() const { return current_.rect; }
  std::uint32_t currentDisplayID() const { return current_.displayID; }
  std::int64_t frameCount() const { return sink_.frameCount(); }

  /// The same for the whole life of this object: renderers that hold it see every restart.
  const std::shared_ptr<TextureBox>& box() const { return sink_.box(); }

 private:
  void started(gpu::Size size);
  void fail(const std::string& message);

  BarCaptureStream& stream_;
  CaptureSink sink_;
  bool isRunning_ = false;
  std::optional<std::string> lastError_;
  BarRegion current_{.displayID = 0, .rect = {}, .scale = 0};
};

}  // namespace veloria
