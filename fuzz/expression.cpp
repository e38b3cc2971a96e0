// Any bytes as an expression: what parses has the same value in parentheses, with a sign that says nothing, and as an
// argument.

#include <algorithm>
#include <cmath>

#include "FuzzTarget.h"
#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"

namespace veloria {
namespace {

const ChannelValues channels{{"a", 0.5}, {"b", -3}, {"t", 1e6}, {"x", std::nan("")}, {"y", HUGE_VAL}};

/// The value; nothing when it does not parse.
std::optional<double> valueOf(const std::string& expression) {
  try {
    const NimbraScript script = NimbraScript::parse("bind glow = " + expression);
    require(script.bindings.size() == 1);
    return script.bindings.front().second.eval(channels);
  } catch (const ScriptError& error) {
    require(error.line >= 1 && !error.message.empty());
    return std::nullopt;
  }
}

/// Nothing that ends the line, starts a comment, or could join the characters around it into one.
bool isPlain(std::string_view text) {
  const auto plain = [](char c) { return c == '\t' || (c >= ' ' && c < 0x7F && c != '#' && c != ';'); };
  return std::ranges::all_of(text, plain) && text.find("//") == std::string_view::npos;
}

/// The extra level or the extra nodes may be what is too much.
void requireSame(std::optional<double> changed, double value) {
  require(!changed || *changed == value || (std::isnan(*changed) && std::isnan(value)));
}

}  // namespace

void fuzz(std::string_view bytes) {
  const std::string text(bytes);
  const auto value = valueOf(text);
  if (!value || !isPlain(text)) return;
  requireSame(valueOf("(" + text + ")"), *value);
  requireSame(valueOf("+(" + text + "\t)"), *value);
  requireSame(valueOf("lerp(" + text + ")"), *value + 0 * (0 - *value));
}

}  // namespace veloria
