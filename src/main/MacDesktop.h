#pragma once

#include <memory>

#include "base/Environment.h"
#include "gpu/Device.h"
#include "platform/macos/capture/MacBarCaptureStream.h"
#include "platform/macos/screens/MacScreenProvider.h"
#include "platform/macos/window/MacOverlayPanelFactory.h"

namespace veloria {

/// The Mac's screens, overlay windows and menu bar, and the GPU that draws into them. Main thread, once there is an
/// application object.
class MacDesktop {
 public:
  explicit MacDesktop(const Environment& environment);

  MacScreenProvider& screens() { return screens_; }
  MacOverlayPanelFactory& panels() { return panels_; }
  MacBarCaptureStream& captureStream() { return capture_; }
  /// The device that panels and captures which are made from now on draw with. Throws as veloria::makeDevice().
  std::unique_ptr<gpu::Device> makeDevice();
  /// Whether a full-screen space shows on the first screen.
  bool isFullScreen();

 private:
  gpu::Device* device_ = nullptr;
  MacScreenProvider screens_;
  MacOverlayPanelFactory panels_;
  MacBarCaptureStream capture_;
};

}  // namespace veloria
