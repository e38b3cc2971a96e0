#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>

#include "base/MediaClock.h"
#include "ports/EventLoop.h"
#include "scene/AgentSource.h"
#include "scene/DriveChannels.h"
#include "scene/NimbraScript.h"
#include "settings/NimbraConfig.h"
#include "sources/AudioSource.h"
#include "sources/WeatherSource.h"

namespace veloria {

/// Turns the settings record into the record that is drawn, thirty times a second: feeds the channels from the sources
/// of the drive mode, runs the mode's script on them, applies the pace and an agent's alert flash, and passes the
/// result to onConfig.
///
/// Main thread. The driver listens to sound only in the music mode and while it is not suspended; it fetches the
/// weather only in the weather and wind modes. The agent state file counts in every mode: its numbers under the
/// sources' names and those that the script reads. The driver does not follow the settings by itself: call recompile()
/// after a change of the drive mode or the script.
class SceneDriver {
 public:
  static constexpr double tickSeconds = 1.0 / 30;

  struct Ports {
    /// The current settings. The reference must stay valid until the driver's call returns.
    std::function<const NimbraConfig&()> settings;
    MediaClock mediaClock = mediaTime;
    /// Seconds since 1970, for the times in the agent state file.
    std::function<double()> wallClock = wallTime;
    /// Null if tick() is called by hand. Must outlive the driver.
    TimerFactory* timers = nullptr;
    /// Empty: none.
    std::filesystem::path agentStateFile = {};
    /// Makes a source for the computer's sound, not yet started. Empty: the channels of sound are not fed.
    std::function<std::unique_ptr<AudioSource>()> makeAudioSource = {};
    /// Without `http`, the channels of the weather are not fed.
    WeatherSource::Ports weather = {};
    /// Computes the palette of the desktop picture (nothing if there is no picture) and calls back on this thread, at
    /// once, later or never. Empty: no desktop picture.
    std::function<void(std::function<void(std::optional<Palette>)>)> sampleWallpaper = {};
  };

  /// Starts the timer with the plain settings; call recompile() next.
  explicit SceneDriver(Ports ports);
  SceneDriver(const SceneDriver&) = delete;
  SceneDriver& operator=(const SceneDriver&) = delete;

  /// Parses the script of the current drive mode, then calls updateSources(). If the script has an error, the plain
  /// settings are drawn and scriptError() says why.
  void recompile();

  /// Starts or stops listening to match the drive mode, and restarts it after a failure. If the mode changed, the
  /// channels of the old mode's sources fade out.
  void updateSources();

  /// One step. The time since the last one is clamped to 1/240 to 0.5 s. Does not allocate once channels and settings
  /// are stable.
  void tick();

  /// Stops the timer and the listening, and starts them again; repeated calls have no effect. The channels keep their
  /// values.
  void suspend();
  void resume();

  const NimbraScript& compiled() const { return compiled_; }
  /// The record of the last tick; the plain settings before the first.
  const NimbraConfig& driven() const { return driven_; }
  /// The error of the last recompile(), if any.
  const std::optional<std::string>& scriptError() const { return scriptError_; }
  /// Null while not listening.
  const AudioSource* audio() const { return audio_.get(); }
  const WeatherSource& weather() const { return weather_; }
  const AgentSource& agent() const { return agent_; }

  DriveChannels channels;            ///< may be set between ticks
  std::optional<Palette> wallpaper;  ///< the palette of the desktop picture, once known
  /// Called on every tick with the driven record, which is valid during the call. Must not be replaced during the call.
  std::function<void(const NimbraConfig&)> onConfig;

 private:
  void startTimer();
  void feedChannels(const NimbraConfig& settings, double now);
  void feedAudio();
  void feedWeather(const NimbraConfig& settings);
  void feedAgent();
  void logAudio(const AudioSource::Bands& bands);
  void checkWallpaper(const NimbraConfig& settings, double now);
  void requestWallpaper(double now);
  void drive(const NimbraConfig& settings);
  void restartFrom(const NimbraConfig& settings);
  void setPalette(std::span<const ColorStop> stops);
  void flashAlert();

  Ports ports_;
  NimbraScript compiled_;
  std::optional<std::string> scriptError_;
  NimbraConfig driven_;                  // overwritten on each tick, so that its buffers stay
  std::optional<Palette> sparePalette_;  // the buffers of driven_.customPalette while the settings have none
  double started_;
  double lastTick_;
  double lastWallpaperCheck_ = 0;
  Visualizer lastSource_ = Visualizer::autonomous;
  AgentSource agent_;
  std::set<std::string, std::less<>> agentNames_;  // the agent's channels that are fed
  WeatherSource weather_;
  std::unique_ptr<AudioSource> audio_;
  int audioTicks_ = 0;
  bool suspended_ = false;
  std::shared_ptr<bool> life_ = std::make_shared<bool>(true);  // lets late answers check that this still exists
  std::unique_ptr<Timer> timer_;                               // last, so that it stops first
};

}  // namespace veloria
