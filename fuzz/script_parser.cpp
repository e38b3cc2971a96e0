// Any bytes as a scene script: it parses or says on which line it does not, and what it parses to can be drawn.

#include <cmath>

#include "FuzzTarget.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

void veloria::fuzz(std::string_view text) {
  try {
    const NimbraScript script = NimbraScript::parse(text);
    for (const ColorStop& stop : script.paletteStops.value_or(FourStops{})) {
      for (const float component : stop) require(component >= 0 && component <= 1);
    }
    const auto report = reportOn(script, {{"bass", 0.5}, {"t", 1e6}, {"x", std::nan("")}, {"y", -HUGE_VAL}});
    for (std::size_t i = 0; i < scriptParamCount; ++i) {
      const auto& [low, high] = scriptParams[i].range;
      const double value = report.values[i].second;
      require((value >= low && value <= high) || (scriptParams[i].param == ScriptParam::hue && std::isnan(value)));
    }
  } catch (const ScriptError& error) {
    const auto mostLines = static_cast<int>(text.size()) + 1;  // no line end is shorter than a byte
    require(error.line >= 1 && error.line <= mostLines && !error.message.empty());
  }
}
