#include "scene/DrivenConfig.h"

#include <algorithm>
#include <array>

#include "scene/ScriptReport.h"

namespace veloria {

namespace {

/// The fields that the pace reads and writes.
constexpr std::array<double NimbraConfig::*, 6> paceFields{
    &NimbraConfig::tempo,     &NimbraConfig::timeScale,    &NimbraConfig::flowShear,
    &NimbraConfig::vorticity, &NimbraConfig::curlStrength, &NimbraConfig::shimmer,
};

void copyPaceFields(const NimbraConfig& from, NimbraConfig& to) {
  for (const auto field : paceFields) to.*field = from.*field;
}

}  // namespace

void setCustomPalette(NimbraConfig& config, std::span<const ColorStop> stops) {
  Palette& palette = config.customPalette ? *config.customPalette : config.customPalette.emplace();
  palette.name = "Custom";
  palette.stops.assign(stops.begin(), stops.end());
}

std::span<const ColorStop> chosenStops(const NimbraScript& script, const std::optional<Palette>& wallpaper,
                                       std::span<const ColorStop> agentPalette) {
  if (!agentPalette.empty()) return agentPalette;
  if (script.paletteFromWallpaper && wallpaper) return wallpaper->stops;
  if (script.paletteStops) return *script.paletteStops;
  return {};
}

void assignParameters(NimbraConfig& config, const NimbraScript& script, const ChannelValues& channels) {
  for (const auto& [param, value] : script.constants) assign(config, param, value);
  for (const auto& [param, expression] : script.bindings) assign(config, param, expression.eval(channels));
}

// The record's own rule works on a copy; here the copy holds nothing but numbers.
void applyTempo(NimbraConfig& config) {
  NimbraConfig motion;
  copyPaceFields(config, motion);
  copyPaceFields(motion.applyingTempo(), config);
}

double alertEnvelope(double alertUntil, double alertFor, double nowWallClock) {
  const double remaining = alertUntil - nowWallClock;
  if (!(alertUntil > 0 && remaining > 0)) return 0;
  const double x = std::min(1.0, remaining / alertFor);
  return x > 0.001 ? x * x * (3 - 2 * x) : 0;
}

void applyAlert(NimbraConfig& config, double strength, bool ownPalette) {
  const double s = strength;
  if (ownPalette) config.hueSpread *= 1 - 0.8 * s;
  config.exposure += 1.5 * s;
  config.glowAmount += 1.2 * s;
  config.emitRate += 1.4 * s;
  config.timeScale = std::min(ranges::timeScale.high, (1 + 2.5 * s) * config.timeScale);
  config.curlStrength = std::min(ranges::curlStrength.high, config.curlStrength + 2.5 * s);
  config.rayIntensity = std::min(ranges::rayIntensity.high, config.rayIntensity + 0.3 * s);
  config.saturation = std::min(ranges::saturation.high, config.saturation + 0.4 * s);
}

std::optional<std::string> scriptSizeError(std::size_t bytes) {
  if (bytes <= maxScriptBytes) return std::nullopt;
  return "the script has " + std::to_string(bytes) + " bytes; at most " + std::to_string(maxScriptBytes) +
         " are allowed";
}

ScriptReport reportOn(const NimbraScript& script, const ChannelValues& channels) {
  NimbraConfig config;
  assignParameters(config, script, channels);
  ScriptReport report{script.paletteStops, script.paletteFromWallpaper, {}};
  for (std::size_t i = 0; i < scriptParamCount; ++i) {
    report.values[i] = {scriptParams[i].keyword, config.*scriptParams[i].field};
  }
  return report;
}

}  // namespace veloria
