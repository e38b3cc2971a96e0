#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>

#include "base/MediaClock.h"
#include "ports/Timer.h"
#include "scene/AgentSource.h"
#include "scene/DriveChannels.h"
#include "scene/NimbraScript.h"
#include "settings/NimbraConfig.h"
#include "sources/AudioSource.h"
#include "sources/WeatherSource.h"

namespace veloria {

/// Turns the settings record into the record that is drawn, thirty times a second: feeds the channels from the sources
/// that the drive mode asks for, runs the mode's script against them, applies the pace and an agent's alert flash, and
/// hands the result on.
///
/// Main thread. Sound is listened to in the music mode only, and not while the driver is suspended; the weather is
/// asked for in the weather and wind modes only; the agent state file counts in every mode, its numbers under the
/// sources' own names and those that the script reads. It does not look for its parts itself and there is no shared
/// instance here: who puts the program together makes the one driver. It does not react to settings by itself either;
/// whoever changes the drive mode or the script calls recompile().
class SceneDriver {
 public:
  static constexpr double tickSeconds = 1.0 / 30;

  struct Ports {
    /// The current settings. The reference is used until the end of the call that asked for it.
    std::function<const NimbraConfig&()> settings;
    MediaClock mediaClock = mediaTime;
    /// Seconds since 1970, for what the agent state file says.
    std::function<double()> wallClock = wallTime;
    /// Null when nothing ticks by itself and tick() is called by hand. Outlives the driver.
    TimerFactory* timers = nullptr;
    /// Empty: there is none.
    std::filesystem::path agentStateFile = {};
    /// Makes what listens to the computer's sound, not started yet. Empty: nobody listens, and the channels of sound
    /// are left to others.
    std::function<std::unique_ptr<AudioSource>()> makeAudioSource = {};
    /// Without its `http`, the channels of the weather are left to others.
    WeatherSource::Ports weather = {};
    /// Works out the palette of the desktop picture and calls back on this thread, at once or later or never; nothing
    /// when there is none. Empty: there is no desktop picture.
    std::function<void(std::function<void(std::optional<Palette>)>)> sampleWallpaper = {};
  };

  /// Starts the timer with the plain settings; call recompile() next.
  explicit SceneDriver(Ports ports);
  SceneDriver(const SceneDriver&) = delete;
  SceneDriver& operator=(const SceneDriver&) = delete;

  /// Parses the script of the current drive mode, then updateSources(). With a script that is wrong the plain settings
  /// are drawn, and scriptError() says why.
  void recompile();

  /// Fits the sources to the drive mode: starts or ends listening, and starts anew when the sound system had failed;
  /// when the mode changed, what the old mode's sources said fades out.
  void updateSources();

  /// One step: the time since the last one counts as at least 1/240 s and at most 0.5 s. Allocates nothing once the
  /// channels and the settings have settled.
  void tick();

  /// Stops the timer and the listening, and starts them again; neither does anything twice. The channels keep their
  /// values meanwhile.
  void suspend();
  void resume();

  const NimbraScript& compiled() const { return compiled_; }
  /// The record of the last tick; the plain settings before the first.
  const NimbraConfig& driven() const { return driven_; }
  /// The description of the last recompile's error; nothing when the script is right.
  const std::optional<std::string>& scriptError() const { return scriptError_; }
  /// Null while nobody listens.
  const AudioSource* audio() const { return audio_.get(); }
  const WeatherSource& weather() const { return weather_; }
  const AgentSource& agent() const { return agent_; }

  DriveChannels channels;            ///< anybody may set channels between ticks
  std::optional<Palette> wallpaper;  ///< the palette of the desktop picture, once there is one
  /// Gets the driven record on every tick; valid during the call. It must not be replaced from inside the call.
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
  std::set<std::string, std::less<>> agentNames_;  // those of its channels that are fed
  WeatherSource weather_;
  std::unique_ptr<AudioSource> audio_;
  int audioTicks_ = 0;
  bool suspended_ = false;
  std::shared_ptr<bool> life_ = std::make_shared<bool>(true);  // answers that come late look whether it is still there
  std::unique_ptr<Timer> timer_;                               // last, so that it stops first
};

}  // namespace veloria
