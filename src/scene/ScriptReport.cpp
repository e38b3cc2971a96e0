#include "scene/ScriptReport.h"

#include "scene/DrivenConfig.h"

namespace veloria {

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
