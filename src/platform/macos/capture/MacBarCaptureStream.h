#pragma once

#include <functional>
#include <memory>

#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"

namespace veloria {

/// Captures the menu bar through ScreenCaptureKit, without our own windows. Its pictures are textures of the device,
/// without a copy. Needs the Screen Recording permission, which the system asks the user for when a capture starts.
/// Without it, and when the system ends the capture, failed() gets the system's message. Main thread.
class MacBarCaptureStream final : public BarCaptureStream {
 public:
  /// `device` returns the device that draws now (of gpu::metal), or null; called at each start. The device must live
  /// until the next stop.
  explicit MacBarCaptureStream(std::function<gpu::Device*()> device);
  ~MacBarCaptureStream() override;

  void start(const BarRegion& region, BarCaptureHandlers handlers) override;
  void stop() override;

 private:
  struct Run;

  std::function<gpu::Device*()> device_;
  std::shared_ptr<Run> run_;
};

}  // namespace veloria
