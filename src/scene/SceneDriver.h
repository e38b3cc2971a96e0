#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "base/MediaClock.h"
#include "base/Timer.h"
#include "scene/DriveChannels.h"
#include "scene/NimbraScript.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Turns the settings record into the record that is drawn, thirty times a second: feeds the channels, runs the script
/// of the drive mode against them, applies the pace and hands the result on.
///
/// Main thread. It does not look for its parts itself and there is no shared instance here: who puts the program
/// together makes the one driver. It does not react to settings by itself either; whoever changes the drive mode or the
/// script calls recompile().
class SceneDriver {
 public:
  static constexpr double tickSeconds = 1.0 / 30;

  struct Ports {
    /// The current settings. The reference is used until the end of the call that asked for it.
    std::function<const NimbraConfig&()> settings;
    MediaClock mediaClock = mediaTime;
    /// Seconds since 1970.
    std::function<double()> wallClock = {};
    /// Null when nothing ticks by itself and tick() is called by hand. Outlives the driver.
    TimerFactory* timers = nullptr;
  };

  /// Starts the timer with the plain settings; call recompile() next.
  explicit SceneDriver(Ports ports);
  SceneDriver(const SceneDriver&) = delete;
  SceneDriver& operator=(const SceneDriver&) = delete;

  /// Parses the script of the current drive mode, then updateSources(). With a script that is wrong the plain settings
  /// are drawn, and scriptError() says why.
  void recompile();

  /// Fits the sources to the drive mode: when it changed, what the old mode's sources said fades out.
  void updateSources();

  /// One step: the time since the last one counts as at least 1/240 s and at most 0.5 s. Allocates nothing once the
  /// channels and the settings have settled.
  void tick();

  /// Stops the timer and starts it again; neither does anything twice. The channels keep their values meanwhile.
  void suspend();
  void resume();

  const NimbraScript& compiled() const { return compiled_; }
  /// The description of the last recompile's error; nothing when the script is right.
  const std::optional<std::string>& scriptError() const { return scriptError_; }

  DriveChannels channels;            ///< anybody may set channels between ticks
  std::optional<Palette> wallpaper;  ///< the palette of the desktop picture, once there is one
  /// Gets the driven record on every tick; valid during the call. It must not be replaced from inside the call.
  std::function<void(const NimbraConfig&)> onConfig;

 private:
  void feedChannels(const NimbraConfig& settings, double now);
  void drive(const NimbraConfig& settings);
  void restartFrom(const NimbraConfig& settings);
  void setPalette(std::span<const ColorStop> stops);

  Ports ports_;
  NimbraScript compiled_;
  std::optional<std::string> scriptError_;
  NimbraConfig driven_;                  // overwritten on each tick, so that its buffers stay
  std::optional<Palette> sparePalette_;  // the buffers of driven_.customPalette while the settings have none
  double started_;
  double lastTick_;
  Visualizer lastSource_ = Visualizer::autonomous;
  std::unique_ptr<Timer> timer_;  // last, so that it stops first
};

}  // namespace veloria
