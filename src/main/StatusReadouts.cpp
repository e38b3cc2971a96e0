#include "main/StatusReadouts.h"

#include <cmath>
#include <cstdio>

#include "render/ScreenGeometry.h"

namespace veloria {

namespace {

std::string figuresText(const ScreenStatus& screen) {
  char text[96];
  std::snprintf(text, sizeof text, "%.1f ms GPU · %d fps · %lldx%lld grid", screen.gpuMs, screen.fps,
                static_cast<long long>(screen.gridWidth), static_cast<long long>(screen.gridHeight));
  return text;
}

std::string audioText(const AudioStatus& audio) {
  if (audio.error) return "No sound is heard: " + *audio.error;
  if (!audio.running) return {};
  char text[96];
  const auto percent = [](double level) { return std::lround(100 * level); };
  std::snprintf(text, sizeof text, "Listening · level %ld%% · bass %ld%% · mid %ld%% · treble %ld%%",
                percent(audio.bands.level), percent(audio.bands.bass), percent(audio.bands.mid),
                percent(audio.bands.treble));
  return text;
}

std::string sentence(const char* start, const std::string& reason) {
  return reason.empty() ? std::string() : start + reason;
}

}  // namespace

Readouts readoutsOf(const AppStatus& status, const Screen* mainScreen) {
  Readouts readouts;
  readouts.darkness = sentence("Nothing is drawn: ", status.reason);
  readouts.hint = status.hint;
  for (const ScreenStatus& screen : status.screens) {
    if (status.rendering && mainScreen != nullptr && screen.name == mainScreen->name) {
      readouts.figures = figuresText(screen);
    }
  }
  readouts.cutout = ScreenGeometry::description(mainScreen);
  if (status.weather) {
    readouts.weather = status.weather->readout;
    readouts.weatherError = sentence("The weather can't be had: ", status.weather->error.value_or(""));
  }
  readouts.audio = audioText(status.audio);
  readouts.picture = sentence("The desktop's picture gives no colours: ", status.pictureError.value_or(""));
  if (!status.capture.running) {
    readouts.capture = sentence("The bar's text is not kept: ", status.capture.error.value_or(""));
  }
  if (!status.pointer.available) readouts.pointer = sentence("The pointer is not followed: ", status.pointer.reason);
  readouts.script = status.scriptError.value_or("");
  return readouts;
}

}  // namespace veloria
