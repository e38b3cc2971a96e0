#include "main/commands/Arguments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "base/Color.h"
#include "base/Files.h"
#include "base/PlainNumber.h"
#include "base/StrictJson.h"
#include "base/Text.h"
#include "main/commands/Command.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"

namespace veloria {

namespace {

constexpr double largestSize = 16384;

[[noreturn]] void refuse(const std::string& option, const std::string& text, const std::string& wanted) {
  throw UsageError(option + " '" + text + "' is not " + wanted + ".");
}

std::optional<double> numberIn(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  return plainNumber(text);
}

std::string plain(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

/// "WxH", each above 0 and at most the largest size.
std::optional<Extent> sizeIn(std::string_view text) {
  const auto sides = splitText(text, 'x');
  if (sides.size() != 2) return std::nullopt;
  const auto width = numberIn(sides[0]);
  const auto height = numberIn(sides[1]);
  const auto fits = [](const std::optional<double>& side) { return side && *side > 0 && *side <= largestSize; };
  return fits(width) && fits(height) ? std::optional(Extent{*width, *height}) : std::nullopt;
}

}  // namespace

gpu::Size parsePixelSize(const std::string& option, const std::string& text) {
  const auto size = sizeIn(text);
  if (!size || size->width != std::floor(size->width) || size->height != std::floor(size->height)) {
    refuse(option, text, "a size in pixels such as 1920x32 (1 to 16384 each)");
  }
  return {static_cast<std::uint32_t>(size->width), static_cast<std::uint32_t>(size->height)};
}

Extent parseExtent(const std::string& option, const std::string& text) {
  const auto size = sizeIn(text);
  if (!size) refuse(option, text, "a size in points such as 200x32");
  return *size;
}

PanelEdge parseEdge(const std::string& option, const std::string& text) {
  for (const PanelEdge edge : {PanelEdge::top, PanelEdge::bottom}) {
    if (text == nameOf(edge)) return edge;
  }
  refuse(option, text, "top or bottom");
}

double parseNumber(const std::string& option, const std::string& text, double low, double high) {
  const auto value = numberIn(text);
  if (!value || *value < low || *value > high)
    refuse(option, text, "a number from " + plain(low) + " to " + plain(high));
  return *value;
}

long parseCount(const std::string& option, const std::string& text, long low, long high) {
  const auto value = numberIn(text);
  if (!value || *value != std::floor(*value) || *value < static_cast<double>(low) ||
      *value > static_cast<double>(high)) {
    refuse(option, text, "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
  }
  return static_cast<long>(*value);
}

std::pair<std::string, std::string> parseAssignment(const std::string& option, const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos || equals == 0) refuse(option, text, "of the form name=value");
  return {text.substr(0, equals), text.substr(equals + 1)};
}

std::pair<std::string, double> parseChannel(const std::string& option, const std::string& text) {
  const auto [name, value] = parseAssignment(option, text);
  const auto number = numberIn(value);
  if (!number) refuse(option, text, "a channel and a number such as bass=0.5");
  return {lowerCased(name), *number};
}

std::vector<double> parsePointer(const std::string& option, const std::string& text) {
  std::vector<double> numbers;
  for (const auto part : splitText(text, ',')) {
    const auto value = numberIn(part);
    if (!value) refuse(option, text, "X,Y or X,Y,DX,DY in points");
    numbers.push_back(*value);
  }
  if (numbers.size() != 2 && numbers.size() != 4) refuse(option, text, "X,Y or X,Y,DX,DY in points");
  return numbers;
}

std::optional<std::array<unsigned char, 3>> parseColor(const std::string& option, const std::string& text) {
  if (!text.starts_with('#')) return std::nullopt;
  const auto rgb = rgbFromHex(text);
  if (!rgb) refuse(option, text, "a colour such as #101018");
  return std::array<unsigned char, 3>{static_cast<unsigned char>(*rgb >> 16), static_cast<unsigned char>(*rgb >> 8),
                                      static_cast<unsigned char>(*rgb)};
}

FramePattern parseFramePattern(const std::string& option, const std::string& text) {
  const auto percent = text.find('%');
  if (percent == std::string::npos) return {text, {}, 0, false};
  std::size_t at = percent + 1;
  if (at < text.size() && text[at] == '0') ++at;
  FramePattern pattern{text.substr(0, percent), {}, 0, true};
  if (at < text.size() && text[at] >= '1' && text[at] <= '9') pattern.digits = text[at++] - '0';
  if (at >= text.size() || text[at] != 'd' || text.find('%', at) != std::string::npos) {
    refuse(option, text, "a file name with at most one frame number such as frame-%05d.png");
  }
  pattern.after = text.substr(at + 1);
  return pattern;
}

std::string FramePattern::fileFor(long frame) const {
  if (!numbered) return before;
  std::string number = std::to_string(frame);
  if (static_cast<int>(number.size()) < digits) {
    number.insert(0, static_cast<std::size_t>(digits) - number.size(), '0');
  }
  return before + number + after;
}

namespace {

std::string presetNames() {
  std::string names;
  for (const LookPreset& preset : LookPreset::all()) {
    names += (names.empty() ? "\"" : ", \"") + std::string(preset.name) + "\"";
  }
  return names;
}

NimbraConfig configFile(const std::string& path) {
  const auto bytes = readFileBounded(path, maximumJsonBytes);
  if (!bytes) throw WorkError(bytes.error());
  auto config = decodeSettings(*bytes);
  if (!config) throw WorkError(path + ": " + config.error());
  return *std::move(config);
}

}  // namespace

void addConfigOptions(QCommandLineParser& parser) {
  parser.addOptions({
      {"config", "Settings file to begin with (default: the built-in defaults).", "file"},
      {"preset", QString::fromStdString("Look preset: " + presetNames() + "."), "name"},
      {"set", "Set one setting to a JSON value, such as exposure=1.5 or layerMode='\"desktopFull\"'. May be repeated.",
       "key=json"},
      {"script", "Scene script to drive the picture with.", "file"},
  });
}

std::string readScriptFile(const std::string& path) {
  auto text = readFileBounded(path, maximumJsonBytes);
  if (!text) throw WorkError(text.error());
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  return text->starts_with(byteOrderMark) ? text->substr(byteOrderMark.size()) : *std::move(text);
}

NimbraConfig configFrom(const QCommandLineParser& parser) {
  NimbraConfig config;
  if (parser.isSet("config")) config = configFile(parser.value("config").toStdString());
  if (parser.isSet("preset")) {
    const std::string name = parser.value("preset").toStdString();
    const LookPreset* preset = LookPreset::find(name);
    if (preset == nullptr) throw UsageError("--preset: unknown preset '" + name + "'. Presets: " + presetNames() + ".");
    config = choose(config, *preset);
  }
  for (const QString& text : parser.values("set")) {
    const auto [key, json] = parseAssignment("--set", text.toStdString());
    if (const auto set = setField(config, key, json); !set) throw UsageError("--set " + key + ": " + set.error());
  }
  if (parser.isSet("script")) {
    config.customScript = readScriptFile(parser.value("script").toStdString());
    config.visualizer = Visualizer::script;
  }
  return config;
}

}  // namespace veloria
