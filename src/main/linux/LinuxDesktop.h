#pragma once

#include <memory>
#include <string>

#include "base/Environment.h"
#include "main/Desktop.h"
#include "main/linux/LinuxGpu.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "ports/EventLoop.h"

namespace veloria {

/// What is known about the display servers before one is chosen.
struct DesktopFacts {
  bool waylandNamed = false;    ///< WAYLAND_DISPLAY is set
  bool waylandAnswers = false;  ///< it could be connected to
  std::string waylandProblem;   ///< why not
  bool layerShell = false;      ///< the compositor has the layer shell
  bool x11Named = false;        ///< DISPLAY is set
};

enum class DesktopKind { wayland, x11, none };

struct DesktopChoice {
  DesktopKind kind = DesktopKind::none;
  std::string problem;  ///< for a person, when there is none
  bool operator==(const DesktopChoice&) const = default;
};

/// Wayland if its compositor allows overlays, else X11 (which most Wayland desktops offer too), else none.
DesktopChoice chooseDesktop(const DesktopFacts& facts);

/// Opens the desktop that chooseDesktop() names. `timers` must outlive it. Throws WorkError if there is none, and
/// std::runtime_error for one that can't be used.
std::unique_ptr<Desktop> openDesktop(const Environment& environment, const DescriptorWatcher& watch,
                                     TimerFactory& timers);

/// A desktop whose bands the device draws that NIMBRA_GPU names; else the best GPU, or the CPU in its place.
class DrawnDesktop : public Desktop {
 public:
  std::unique_ptr<gpu::Device> makeDevice() override { return keep(makeNamedDeviceOrGpu()); }
  std::unique_ptr<gpu::Device> makeSubstitute() override { return keep(veloria::makeSubstitute()); }

 protected:
  /// The device that was made last.
  gpu::Device& device() const { return *device_; }

 private:
  std::unique_ptr<gpu::Device> keep(std::unique_ptr<gpu::Device> device) {
    device_ = device.get();
    return device;
  }

  gpu::Device* device_ = nullptr;
};

/// Throws std::runtime_error if the compositor offers no overlays.
std::unique_ptr<Desktop> makeWaylandDesktop(std::unique_ptr<WaylandConnection> connection,
                                            const Environment& environment);

/// `besideGnome`: the display is XWayland's in a GNOME session, where the shell's extension tells what X11 can't.
/// Throws std::runtime_error if the display can't be opened or allows no overlays.
std::unique_ptr<Desktop> makeX11Desktop(const std::string& displayName, bool besideGnome,
                                        const DescriptorWatcher& watch, TimerFactory& timers);

}  // namespace veloria
