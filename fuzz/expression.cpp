// Any bytes as an expression: what parses has the same value in parentheses, with a sign that says nothing, and as an
// argument.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"

namespace {

using namespace veloria;

const ChannelValues channels{{"a", 0.5}, {"b", -3}, {"t", 1e6}, {"x", std::nan("")}, {"y", HUGE_VAL}};

/// The value; nothing when it does not parse.
std::optional<double> valueOf(const std::string& expression) {
  try {
    const NimbraScript script = NimbraScript::parse("bind glow = " + expression);
    if (script.bindings.size() != 1) std::abort();
    return script.bindings.front().second.eval(channels);
  } catch (const ScriptError& error) {
    if (error.line < 1 || error.message.empty()) std::abort();
    return std::nullopt;
  }
}

bool same(double left, double right) {
  return left == right || (std::isnan(left) && std::isnan(right));
}

/// Nothing that ends the line, starts a comment, or could join the characters around it into one.
bool isPlain(std::string_view text) {
  for (const char c : text) {
    if ((c < ' ' && c != '\t') || c == '#' || c == ';' || static_cast<unsigned char>(c) >= 0x7F) return false;
  }
  return text.find("//") == std::string_view::npos;
}

/// The extra level or the extra nodes may be what is too much.
void requireSame(std::optional<double> changed, double value) {
  if (changed && !same(*changed, value)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto value = valueOf(text);
  if (!value || !isPlain(text)) return 0;
  requireSame(valueOf("(" + text + ")"), *value);
  requireSame(valueOf("+(" + text + "\t)"), *value);
  requireSame(valueOf("lerp(" + text + ")"), *value + 0 * (0 - *value));
  return 0;
}
