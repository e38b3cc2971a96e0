#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/Environment.h"
#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "ports/DescriptorWatcher.h"
#include "ports/OverlayPanel.h"
#include "ports/PointerSource.h"
#include "ports/ScreenProvider.h"
#include "ports/Timer.h"

namespace veloria {

/// The display server in use: screens, windows, and a GPU that can draw into them. Main thread.
class Desktop {
 public:
  virtual ~Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// "x11" or "wayland".
  virtual const char* name() const = 0;
  virtual ScreenProvider& screens() = 0;
  virtual OverlayPanelFactory& panels() = 0;
  /// The device that panels which are made from now on draw with. Throws as veloria::makeDevice().
  virtual std::unique_ptr<gpu::Device> makeDevice() = 0;
  /// Null where nothing can be captured without our own windows; captureProblem() then says why.
  virtual BarCaptureStream* captureStream() = 0;
  virtual std::string captureProblem() const = 0;
  /// Called when a capture that failed may work now.
  virtual void setCaptureChanceHandler(std::function<void()> handler) = 0;
  virtual PointerSource pointerSource() = 0;
  /// Whether a full-screen window is in front on the first screen.
  virtual bool isFullScreen() = 0;
  /// Whether the displays are switched off, as far as the display server tells.
  virtual bool displaysOff() = 0;
  /// Whether what is translucent is shown so. A plain read of what is known.
  virtual bool showsTranslucency() const = 0;
  /// Called once, with a sentence for a person, when the display server is gone.
  virtual void setBrokenHandler(std::function<void(const std::string&)> handler) = 0;

 protected:
  Desktop() = default;
};

/// Opens the desktop that chooseDesktop() says. `timers` must outlive it. Throws WorkError where there is none, and
/// std::runtime_error for one that can't be used.
std::unique_ptr<Desktop> openDesktop(const Environment& environment, const DescriptorWatcher& watch,
                                     TimerFactory& timers);

}  // namespace veloria
