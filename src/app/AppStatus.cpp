#include "app/AppStatus.h"

#include <cmath>
#include <cstdio>

namespace veloria {

namespace {

using Json = nlohmann::ordered_json;

Json rect(const Rect& r) {
  return Json::array({r.x, r.y, r.width, r.height});
}

template <typename T>
Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

double thousandths(double value) {
  return std::round(value * 1000) / 1000;
}

Json screenJson(const ScreenStatus& screen) {
  return {{"name", screen.name},
          {"frame", rect(screen.frame)},
          {"menuBarHeight", screen.menuBarHeight},
          {"edge", nameOf(screen.edge)},
          {"panel", screen.panelEdge ? Json(nameOf(*screen.panelEdge)) : Json(nullptr)},
          {"notch", screen.notch ? rect(*screen.notch) : Json(nullptr)},
          {"scale", screen.scale},
          {"grid", Json::array({screen.gridWidth, screen.gridHeight})},
          {"fps", screen.fps},
          {"wantedFps", screen.wantedFps},
          {"rateDivisor", screen.rateDivisor},
          {"gpuMs", thousandths(screen.gpuMs)}};
}

Json audioJson(const AudioStatus& audio) {
  return {{"running", audio.running},
          {"error", orNull(audio.error)},
          {"level", thousandths(audio.bands.level)},
          {"bass", thousandths(audio.bands.bass)},
          {"mid", thousandths(audio.bands.mid)},
          {"treble", thousandths(audio.bands.treble)},
          {"beat", thousandths(audio.bands.beat)}};
}

Json weatherJson(const WeatherStatus& weather) {
  return {{"temp", weather.temp},          {"wind", weather.wind}, {"gust", weather.gust},
          {"cloud", weather.cloud},        {"rain", weather.rain}, {"readout", weather.readout},
          {"error", orNull(weather.error)}};
}

/// Lines "name: value" from JSON of any shape.
class Lines {
 public:
  explicit Lines(std::string& text) : text_(text) {}

  void add(const char* label, const std::string& value) {
    if (value.empty()) return;
    text_ += std::string(label) + ": ";
    for (const char c : value) text_ += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c;
    text_ += "\n";
  }

 private:
  std::string& text_;
};

const Json& member(const Json& object, const char* key) {
  static const Json none;
  const auto found = object.is_object() ? object.find(key) : object.end();
  return found == object.end() || !object.is_object() ? none : *found;
}

std::string text(const Json& object, const char* key) {
  const Json& value = member(object, key);
  return value.is_string() ? value.get<std::string>() : std::string();
}

std::string number(const Json& value, int decimals) {
  if (!value.is_number()) return "?";
  char buffer[400];
  std::snprintf(buffer, sizeof(buffer), "%.*f", decimals, value.get<double>());
  return buffer;
}

std::string screenText(const Json& screen) {
  const Json& frame = member(screen, "frame");
  const Json& grid = member(screen, "grid");
  const auto at = [](const Json& list, std::size_t i) { return i < list.size() && list.is_array() ? list[i] : Json(); };
  const std::string edge = text(screen, "edge");
  const Json& divisor = member(screen, "rateDivisor");
  const bool slowed = divisor.is_number() && divisor.get<double>() > 1;
  const std::string rate =
      slowed ? "slowed down from " + number(member(screen, "wantedFps"), 0) + " because frames take too long, " : "";
  const std::string place = (edge.empty() ? "?" : edge) + " edge" +
                            (member(screen, "panel").is_string() ? "" : " (no panel at the top or bottom)");
  return text(screen, "name") + ", " + number(at(frame, 2), 0) + "x" + number(at(frame, 3), 0) + " points at scale " +
         number(member(screen, "scale"), 2) + ", " + place + ", bar " + number(member(screen, "menuBarHeight"), 0) +
         ", grid " + number(at(grid, 0), 0) + "x" + number(at(grid, 1), 0) + ", " + number(member(screen, "fps"), 0) +
         " frames a second, " + rate + number(member(screen, "gpuMs"), 1) + " ms GPU";
}

std::string audioText(const Json& audio) {
  if (member(audio, "running") != true) return text(audio, "error");
  std::string line = "listening";
  for (const char* band : {"level", "bass", "mid", "treble"}) {
    line += std::string(", ") + band + " " + number(member(audio, band), 2);
  }
  return line;
}

}  // namespace

Json toJson(const AppStatus& status) {
  Json json{{"running", true},
            {"rendering", status.rendering},
            {"reason", status.reason},
            {"visualizer", rawValue(status.visualizer)},
            {"layer", rawValue(status.layer)},
            {"backend", status.backend},
            {"device", status.device},
            {"hdr", {{"reason", status.hdr}}},
            {"screens", Json::array()},
            {"script", {{"error", orNull(status.scriptError)}}},
            {"audio", audioJson(status.audio)},
            {"weather", status.weather ? weatherJson(*status.weather) : Json(nullptr)},
            {"desktopPicture", {{"error", orNull(status.pictureError)}}},
            {"capture", {{"running", status.capture.running}, {"error", orNull(status.capture.error)}}},
            {"panel", {{"clear", orNull(status.panelClear)}}},
            {"pointer", {{"available", status.pointer.available}, {"reason", status.pointer.reason}}},
            {"hint", status.hint}};
  for (const ScreenStatus& screen : status.screens) json["screens"].push_back(screenJson(screen));
  return json;
}

std::string statusText(const Json& status) {
  std::string result;
  Lines lines(result);
  const std::string reason = text(status, "reason");
  lines.add("Veloria",
            member(status, "rendering") == true ? "drawing" : "not drawing" + (reason.empty() ? "" : ": " + reason));
  lines.add("drive", text(status, "visualizer"));
  lines.add("layer", text(status, "layer"));
  lines.add("device", text(status, "device") + ", " + text(status, "backend"));
  if (const Json& screens = member(status, "screens"); screens.is_array()) {
    for (const Json& screen : screens) lines.add("screen", screenText(screen));
  }
  lines.add("script", text(member(status, "script"), "error"));
  lines.add("sound", audioText(member(status, "audio")));
  lines.add("weather", text(member(status, "weather"), "readout"));
  lines.add("weather error", text(member(status, "weather"), "error"));
  lines.add("desktop picture", text(member(status, "desktopPicture"), "error"));
  if (member(member(status, "panel"), "clear") == true) lines.add("panel", "clear: it lets the light through");
  lines.add("panel's text", text(member(status, "capture"), "error"));
  lines.add("pointer", text(member(status, "pointer"), "reason"));
  lines.add("hint", text(status, "hint"));
  return result;
}

}  // namespace veloria
