// Any bytes as a scene script: it parses or says on which line it does not, and what it parses to can be drawn.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace {

using namespace veloria;

void require(bool holds) {
  if (!holds) std::abort();
}

void requireColors(const NimbraScript& script) {
  if (!script.paletteStops) return;
  for (const ColorStop& stop : *script.paletteStops) {
    for (const float component : stop) require(component >= 0 && component <= 1);
  }
}

void requireRanges(const ScriptReport& report) {
  for (std::size_t i = 0; i < scriptParamCount; ++i) {
    const ScriptParamInfo& row = scriptParams[i];
    const double value = report.values[i].second;
    require((value >= row.range.low && value <= row.range.high) ||
            (row.param == ScriptParam::hue && std::isnan(value)));
  }
}

/// No line end is shorter than a byte, so there can't be more lines than this.
int mostLines(std::string_view text) {
  return static_cast<int>(text.size()) + 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    const NimbraScript script = NimbraScript::parse(text);
    requireColors(script);
    requireRanges(reportOn(script, {{"bass", 0.5}, {"t", 1e6}, {"x", std::nan("")}, {"y", -HUGE_VAL}}));
  } catch (const ScriptError& error) {
    require(error.line >= 1 && error.line <= mostLines(text) && !error.message.empty());
  }
  return 0;
}
