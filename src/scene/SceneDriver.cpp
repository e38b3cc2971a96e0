#include "scene/SceneDriver.h"

#include <algorithm>
#include <exception>
#include <span>
#include <utility>

#include "base/Log.h"
#include "scene/BuiltInScripts.h"
#include "scene/DrivenConfig.h"
#include "scene/ScriptError.h"

namespace veloria {

namespace {

constexpr double timerTolerance = 0.01;
constexpr double shortestStep = 1.0 / 240;
constexpr double longestStep = 0.5;

void logCompiled(Visualizer mode, const NimbraScript& script, const std::optional<std::string>& error) {
  if (!NimbraLog::enabled()) return;
  NimbraLog::debug("script " + std::string(rawValue(mode)) + ": binds=" + std::to_string(script.bindings.size()) +
                   " consts=" + std::to_string(script.constants.size()) + " error=" + error.value_or("none"));
}

}  // namespace

SceneDriver::SceneDriver(Ports ports) : ports_(std::move(ports)), started_(ports_.mediaClock()), lastTick_(started_) {
  resume();
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
  logCompiled(settings.visualizer, compiled_, scriptError_);
  updateSources();
}

void SceneDriver::updateSources() {
  const Visualizer mode = ports_.settings().visualizer;
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
  drive(settings);
  if (onConfig) onConfig(driven_);
}

void SceneDriver::suspend() {
  timer_.reset();
}

void SceneDriver::resume() {
  if (ports_.timers != nullptr && !timer_) {
    timer_ = ports_.timers->repeating(tickSeconds, timerTolerance, [this] { tick(); });
  }
}

/// The one place where sources put in what they have; all but the clock depend on the drive mode.
void SceneDriver::feedChannels(const NimbraConfig&, double now) {
  channels.set("t", now - started_, 0);
}

void SceneDriver::drive(const NimbraConfig& settings) {
  restartFrom(settings);
  if (settings.matchWallpaper && wallpaper) setPalette(wallpaper->stops);
  setPalette(chosenStops(compiled_, wallpaper, {}));
  assignParameters(driven_, compiled_, channels.values);
  applyTempo(driven_);
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
