#include "scene/SceneDriver.h"

#include <algorithm>
#include <exception>
#include <span>
#include <utility>

#include "base/Log.h"
#include "base/Text.h"
#include "scene/BuiltInScripts.h"
#include "scene/DrivenConfig.h"
#include "scene/ScriptError.h"

namespace veloria {

namespace {

constexpr double timerTolerance = 0.01;
constexpr double shortestStep = 1.0 / 240;
constexpr double longestStep = 0.5;
constexpr double wallpaperSeconds = 20;
constexpr int ticksBetweenAudioLines = 60;
/// Large enough for milliseconds since 1970, small enough for a channel to glide back within seconds.
constexpr double largestAgentValue = 1e15;

// Time constants, in seconds.
constexpr double levelSmoothing = 0.08;
constexpr double bassSmoothing = 0.06;
constexpr double midSmoothing = 0.09;
constexpr double trebleSmoothing = 0.07;
constexpr double weatherSmoothing = 2.0;
constexpr double agentSmoothing = 0.3;

/// The names of an agent's numbers that can have an effect. A state file may hold any number of others.
std::set<std::string, std::less<>> agentNames(const NimbraScript& script) {
  auto names = script.channels();
  for (const std::string_view name : DriveChannels::sourceNames) names.emplace(name);
  return names;
}

void logCompiled(Visualizer mode, const NimbraScript& script, const std::optional<std::string>& error) {
  if (!NimbraLog::enabled()) return;
  NimbraLog::debug("script " + std::string(rawValue(mode)) + ": binds=" + std::to_string(script.bindings.size()) +
                   " consts=" + std::to_string(script.constants.size()) +
                   " error=" + printable(error.value_or("none")));
}

}  // namespace

SceneDriver::SceneDriver(Ports ports)
    : ports_(std::move(ports)),
      started_(ports_.mediaClock()),
      lastTick_(started_),
      agent_(ports_.agentStateFile),
      agentNames_(agentNames(compiled_)),
      weather_(ports_.weather) {
  requestWallpaper(started_);
  startTimer();
}

void SceneDriver::recompile() {
  const NimbraConfig& settings = ports_.settings();
  scriptError_.reset();
  try {
    compiled_ = NimbraScript::parse(sceneScript(settings));
  } catch (const ScriptError& error) {
    scriptError_ = error.description();
  } catch (const std::exception& error) {
    scriptError_ = error.what();
  }
  if (scriptError_) compiled_ = NimbraScript::empty();
  agentNames_ = agentNames(compiled_);
  logCompiled(settings.visualizer, compiled_, scriptError_);
  updateSources();
}

void SceneDriver::updateSources() {
  const Visualizer mode = ports_.settings().visualizer;
  const bool listen = mode == Visualizer::music && ports_.makeAudioSource && !suspended_;
  if (!listen || (audio_ != nullptr && !audio_->isRunning())) audio_.reset();
  if (listen && audio_ == nullptr) {
    audio_ = ports_.makeAudioSource();
    audio_->start();
  }
  if (mode == lastSource_) return;
  channels.clearSourceChannels();
  lastSource_ = mode;
}

void SceneDriver::tick() {
  const double now = ports_.mediaClock();
  const double dt = std::clamp(now - lastTick_, shortestStep, longestStep);
  lastTick_ = now;
  const NimbraConfig& settings = ports_.settings();
  feedChannels(settings, now);
  channels.step(dt);
  checkWallpaper(settings, now);
  drive(settings);
  if (onConfig) onConfig(driven_);
}

void SceneDriver::suspend() {
  suspended_ = true;
  timer_.reset();
  audio_.reset();
}

void SceneDriver::resume() {
  if (!suspended_) return;
  suspended_ = false;
  updateSources();
  startTimer();
}

void SceneDriver::startTimer() {
  if (ports_.timers != nullptr && !timer_) {
    timer_ = ports_.timers->repeating(tickSeconds, timerTolerance, [this] { tick(); });
  }
}

/// The one place where sources put in what they have.
void SceneDriver::feedChannels(const NimbraConfig& settings, double now) {
  channels.set("t", now - started_, 0);
  const Visualizer mode = settings.visualizer;
  if (mode == Visualizer::music && audio_ != nullptr) feedAudio();
  if (mode == Visualizer::weather || mode == Visualizer::wind) feedWeather(settings);
  feedAgent();
}

void SceneDriver::feedAudio() {
  const AudioSource::Bands bands = audio_->bands();
  channels.set("level", bands.level, levelSmoothing);
  channels.set("bass", bands.bass, bassSmoothing);
  channels.set("mid", bands.mid, midSmoothing);
  channels.set("treble", bands.treble, trebleSmoothing);
  channels.setImmediate("beat", bands.beat);
  if (audioTicks_++ % ticksBetweenAudioLines == 0) logAudio(bands);
}

void SceneDriver::logAudio(const AudioSource::Bands& bands) {
  if (!NimbraLog::enabled()) return;
  const auto tap = audio_->diagnostics();
  NimbraLog::debugf("audio cb=%d audioCb=%d fail=%d level=%.3f bass=%.3f fmt=%s err=%s", tap.callbackCount,
                    tap.audioCallbackCount, tap.decodeFailures, bands.level, bands.bass, tap.lastFormatNote.c_str(),
                    audio_->lastError().value_or("none").c_str());
}

void SceneDriver::feedWeather(const NimbraConfig& settings) {
  if (ports_.weather.http == nullptr) return;
  weather_.refreshIfStale(settings.weatherLatitude, settings.weatherLongitude);
  channels.set("temp", weather_.temp(), weatherSmoothing);
  channels.set("wind", weather_.wind(), weatherSmoothing);
  channels.set("gust", weather_.gust(), weatherSmoothing);
  channels.set("cloud", weather_.cloud(), weatherSmoothing);
  channels.set("rain", weather_.rain(), weatherSmoothing);
}

void SceneDriver::feedAgent() {
  agent_.poll(ports_.wallClock());
  for (const auto& name : agentNames_) {
    const auto found = agent_.latest().find(name);
    if (found == agent_.latest().end()) continue;
    channels.set(name, std::clamp(found->second, -largestAgentValue, largestAgentValue), agentSmoothing);
  }
}

void SceneDriver::checkWallpaper(const NimbraConfig& settings, double now) {
  const bool wanted = settings.matchWallpaper || compiled_.paletteFromWallpaper;
  if (wanted && now - lastWallpaperCheck_ > wallpaperSeconds) requestWallpaper(now);
}

void SceneDriver::requestWallpaper(double now) {
  lastWallpaperCheck_ = now;
  if (!ports_.sampleWallpaper) return;
  ports_.sampleWallpaper([this, life = std::weak_ptr<bool>(life_)](std::optional<Palette> palette) {
    if (!life.expired() && palette) wallpaper = std::move(palette);
  });
}

void SceneDriver::drive(const NimbraConfig& settings) {
  restartFrom(settings);
  if (settings.matchWallpaper && wallpaper) setPalette(wallpaper->stops);
  setPalette(chosenStops(compiled_, wallpaper, agent_.paletteOverride()));
  assignParameters(driven_, compiled_, channels.values);
  applyTempo(driven_);
  flashAlert();
}

void SceneDriver::flashAlert() {
  const double strength = alertEnvelope(agent_.alertUntil(), agent_.alertFor(), ports_.wallClock());
  if (strength <= 0) return;
  const auto colors = agent_.alertPalette();
  setPalette(colors);
  applyAlert(driven_, strength, !colors.empty());
}

void SceneDriver::restartFrom(const NimbraConfig& settings) {
  const bool holds = driven_.customPalette.has_value();
  if (holds != settings.customPalette.has_value()) std::swap(driven_.customPalette, sparePalette_);
  driven_ = settings;
}

void SceneDriver::setPalette(std::span<const ColorStop> stops) {
  if (stops.empty()) return;
  if (!driven_.customPalette) std::swap(driven_.customPalette, sparePalette_);
  setCustomPalette(driven_, stops);
}

}  // namespace veloria
