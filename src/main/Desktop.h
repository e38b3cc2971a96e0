#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "ports/OverlayPanel.h"
#include "ports/PointerSource.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// The display server in use: screens, windows, and a GPU that can draw into them. A display server that cannot report
/// something does not override it. Main thread.
class Desktop {
 public:
  virtual ~Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// "x11", "wayland" or "macos".
  virtual const char* name() const = 0;
  virtual ScreenProvider& screens() = 0;
  /// The screen whose figures the settings window shows; nothing if there is none.
  virtual std::optional<Screen> mainScreen() {
    const auto all = screens().screens();
    return all.empty() ? std::nullopt : std::optional(all.front());
  }
  virtual OverlayPanelFactory& panels() = 0;
  /// The device that draws bands which are made from now on. Throws as veloria::makeDevice().
  virtual std::unique_ptr<gpu::Device> makeDevice() = 0;
  /// The same, on the CPU, in a GPU's place. Throws gpu::NoDeviceError if there is none, or if another one was named.
  virtual std::unique_ptr<gpu::Device> makeSubstitute() { throw gpu::NoDeviceError("nothing replaces the GPU here"); }
  /// Null if the panel can't be captured without our own windows; captureProblem() then says why.
  virtual BarCaptureStream* captureStream() = 0;
  virtual std::string captureProblem() const { return {}; }
  /// `handler` is called when a capture that failed may work now.
  virtual void setCaptureChanceHandler(std::function<void()>) {}
  virtual PointerSource pointerSource() = 0;
  /// Whether a full-screen window is in front on the first screen.
  virtual bool isFullScreen() = 0;
  /// Whether the displays are switched off, as far as the display server reports it.
  virtual bool displaysOff() { return false; }
  /// Whether translucent windows are shown translucent. Known from events, so it costs nothing.
  virtual bool showsTranslucency() const { return true; }
  /// `handler` is called once, with a sentence for a person, when the display server is gone.
  virtual void setBrokenHandler(std::function<void(const std::string&)>) {}

 protected:
  Desktop() = default;
};

}  // namespace veloria
