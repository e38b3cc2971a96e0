// Any bytes as a scene script: it parses or says on which line it does not, and what it parses to can be drawn. The
// same bytes as an expression: what parses has the same value in parentheses, with a sign that says nothing, and as an
// argument.

#include <algorithm>
#include <cmath>

#include "FuzzTarget.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace veloria {
namespace {

const ChannelValues channels{{"a", 0.5}, {"b", -3}, {"t", 1e6}, {"x", std::nan("")}, {"y", HUGE_VAL}};

std::optional<NimbraScript> parsed(std::string_view text) {
  try {
    return NimbraScript::parse(text);
  } catch (const ScriptError& error) {
    const auto mostLines = static_cast<int>(text.size()) + 1;  // no line end is shorter than a byte
    require(error.line >= 1 && error.line <= mostLines && !error.message.empty());
    return std::nullopt;
  }
}

void requireDrawable(const NimbraScript& script) {
  for (const ColorStop& stop : script.paletteStops.value_or(FourStops{})) {
    for (const float component : stop) require(component >= 0 && component <= 1);
  }
  const auto report = reportOn(script, channels);
  for (std::size_t i = 0; i < scriptParamCount; ++i) {
    const auto& [low, high] = scriptParams[i].range;
    const double value = report.values[i].second;
    require((value >= low && value <= high) || (scriptParams[i].param == ScriptParam::hue && std::isnan(value)));
  }
}

/// Nothing that ends the line, starts a comment, or could join the characters around it into one.
bool isPlain(std::string_view text) {
  const auto plain = [](char c) { return c == '\t' || (c >= ' ' && c < 0x7F && c != '#' && c != ';'); };
  return std::ranges::all_of(text, plain) && text.find("//") == std::string_view::npos;
}

/// If it parses: the extra level or the extra nodes may be what is too much.
void requireValue(const std::string& expression, double value) {
  const auto script = parsed("bind glow = " + expression);
  if (!script) return;
  const double changed = script->bindings.at(0).second.eval(channels);
  require(changed == value || (std::isnan(changed) && std::isnan(value)));
}

}  // namespace

void fuzz(std::string_view bytes) {
  if (const auto script = parsed(bytes)) requireDrawable(*script);
  const std::string text(bytes);
  const auto script = parsed("bind glow = " + text);
  if (!script || !isPlain(text)) return;
  const double value = script->bindings.at(0).second.eval(channels);
  requireValue("(" + text + ")", value);
  requireValue("+(" + text + "\t)", value);
  requireValue("lerp(" + text + ")", value + 0 * (0 - value));
}

}  // namespace veloria
