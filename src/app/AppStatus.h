#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/Geometry.h"
#include "ports/ScreenProvider.h"
#include "settings/NimbraConfig.h"
#include "sources/AudioSource.h"

namespace veloria {

/// One screen's band.
struct ScreenStatus {
  std::string name;
  Rect frame;                          ///< the band's window: points, global coordinates, y up
  PanelEdge edge = PanelEdge::top;     ///< of the band
  std::optional<PanelEdge> panelEdge;  ///< where the panel is; nothing without one at the top or bottom
  double menuBarHeight = 0;
  std::optional<Rect> notch;  ///< points from the window's top left corner, y down
  double scale = 1;
  std::int64_t gridWidth = 0;
  std::int64_t gridHeight = 0;
  double wantedFps = 60;
  int rateDivisor = 1;  ///< above 1 while the device can't keep up: see RatePlan
  int fps = 0;          ///< frames shown in the last second
  double gpuMs = 0;
};

struct AudioStatus {
  bool running = false;
  std::optional<std::string> error;
  AudioSource::Bands bands;
};

struct WeatherStatus {
  double temp = 0, wind = 0, gust = 0, cloud = 0, rain = 0;
  std::string readout;
  std::optional<std::string> error;
};

struct CaptureStatus {
  bool running = false;
  std::optional<std::string> error;
};

struct PointerStatus {
  bool available = false;
  std::string reason;  ///< why it is not; empty if it is
};

/// The state of the running application.
struct AppStatus {
  bool rendering = false;
  std::string reason;  ///< why not; empty if it is
  Visualizer visualizer = Visualizer::autonomous;
  LayerMode layer = LayerMode::desktopStrip;
  std::string backend;  ///< the display system, "x11" or "wayland"
  std::string device;   ///< its name and, if it is not the one that should draw, why
  std::string hdr;      ///< why HDR glow has no effect; empty if it has, or is off
  std::vector<ScreenStatus> screens;
  std::optional<std::string> scriptError;
  AudioStatus audio;
  std::optional<WeatherStatus> weather;     ///< nothing before the first answer or error
  std::optional<std::string> pictureError;  ///< why the wallpaper gives no colours, while they are wanted
  CaptureStatus capture;
  std::optional<bool> panelClear;  ///< whether the panel lets the light through; nothing if it can't be made clear
  PointerStatus pointer;
  std::string hint;  ///< advice for the user about this desktop; may be empty
};

/// For programs; "running" is true.
nlohmann::ordered_json toJson(const AppStatus& status);

/// For people: lines of text from the object that toJson() makes, which may come from a socket. Missing members and
/// those of a wrong type are skipped; control characters become spaces.
std::string statusText(const nlohmann::ordered_json& status);

}  // namespace veloria
