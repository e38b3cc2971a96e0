#include "scene/NimbraScript.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "ScriptText.h"
#include "scene/ScriptError.h"

namespace veloria {

constexpr std::array<ScriptParamInfo, scriptParamCount> scriptParams = [] {
  std::array<ScriptParamInfo, scriptParamCount> rows{};
  const auto add = [&](const ScriptParamInfo& row) { rows.at(static_cast<std::size_t>(row.param)) = row; };
#define VELORIA_KEYWORD(name, low, high, keyword) \
  add({ScriptParam::keyword, #keyword, {low, high}, &NimbraConfig::name});
#include "settings/NimbraConfigFields.h"
  return rows;
}();

static_assert(std::ranges::none_of(scriptParams, &std::string_view::empty, &ScriptParamInfo::keyword));

const ScriptParamInfo& info(ScriptParam param) {
  return scriptParams[static_cast<std::size_t>(param)];
}

std::optional<ScriptParam> scriptParamFromKeyword(std::string_view keyword) {
  const auto found = std::ranges::find(scriptParams, keyword, &ScriptParamInfo::keyword);
  return found != scriptParams.end() ? std::optional(found->param) : std::nullopt;
}

double clamped(ScriptParam param, double value) {
  if (param == ScriptParam::hue) return value - std::floor(value);
  const Range range = info(param).range;
  return std::isfinite(value) ? bounded(value, range) : range.low;
}

void assign(NimbraConfig& config, ScriptParam param, double value) {
  config.*info(param).field = clamped(param, value);
}

namespace {

constexpr std::string_view setUsage = "set <parameter> <number>";
constexpr std::string_view bindUsage = "bind <parameter> = <expression>";

[[noreturn]] void fail(std::string_view message) {
  throw ScriptError(0, std::string(message));
}

bool isHexDigit(std::string_view character) {
  return character.size() == 1 &&
         std::string_view("0123456789abcdefABCDEF").find(character.front()) != std::string_view::npos;
}

/// The line without a comment that starts with "#" or ";". A "#" before a hexadecimal digit is a color, and after a
/// color neither sign starts a comment.
std::string_view beforeCommentSign(std::string_view line, const Characters& characters) {
  const auto sign = std::ranges::find_if(characters, [](std::string_view c) { return c == "#" || c == ";"; });
  if (sign == characters.end()) return line;
  const auto next = std::next(sign);
  if (*sign == "#" && next != characters.end() && isHexDigit(*next)) return line;
  return line.substr(0, offsetIn(line, *sign));
}

std::vector<std::string_view> splitTokens(std::string_view line, const Characters& characters) {
  std::vector<std::string_view> tokens;
  std::size_t start = 0;
  const auto endToken = [&](std::size_t end) {
    if (end > start) tokens.push_back(line.substr(start, end - start));
    start = end + 1;
  };
  for (const std::string_view character : characters) {
    if (character == " ") endToken(offsetIn(line, character));
  }
  endToken(line.size());
  return tokens;
}

using Tokens = std::vector<std::string_view>;

class ScriptParser {
 public:
  NimbraScript parse(std::string_view text) {
    int number = 0;
    for (const std::string_view line : splitLines(text)) {
      ++number;
      try {
        parseLine(line);
      } catch (const ScriptError& error) {
        throw ScriptError(number, error.message);
      }
    }
    return std::move(script_);
  }

 private:
  void parseLine(std::string_view raw) {
    const std::string_view line = withoutComment(raw);
    if (line.empty()) return;
    const Tokens tokens = splitTokens(line, splitter_.split(line));
    const std::string command = lowercased(tokens.front());
    if (command == "palette") return parsePalette(tokens);
    if (command == "set") return parseSet(tokens);
    if (command == "bind") return parseBind(line);
    fail("unknown command '" + std::string(tokens.front()) + "'");
  }

  std::string_view withoutComment(std::string_view raw) {
    std::string_view line = withoutOuterBlanks(raw);
    line = line.substr(0, line.find("//"));
    return withoutOuterBlanks(beforeCommentSign(line, splitter_.split(line)));
  }

  void parsePalette(const Tokens& tokens) {
    if (tokens.size() < 2) fail("palette needs colours or 'wallpaper'");
    if (lowercased(tokens[1]) == "wallpaper") {
      script_.paletteFromWallpaper = true;
      return;
    }
    std::vector<ColorStop> colors;
    for (const std::string_view token : std::span(tokens).subspan(1)) {
      if (const auto color = colorFromHex(token)) colors.push_back(*color);
    }
    const auto stops = fourStops(colors);
    if (!stops) fail("need at least two #rrggbb colours");
    script_.paletteStops = stops;
  }

  void parseSet(const Tokens& tokens) {
    if (tokens.size() < 3) fail(setUsage);
    const auto param = scriptParamFromKeyword(lowercased(tokens[1]));
    if (!param) fail(setUsage);
    const std::string token(tokens[2]);
    const auto number = numberFromText(token);
    if (!number) fail("'" + token + "' is not a number");
    script_.constants[*param] = *number;
  }

  void parseBind(std::string_view line) {
    const std::string_view rest = withoutOuterBlanks(line.substr(std::string_view("bind").size()));
    const Characters characters = splitter_.split(rest);
    const auto equals = std::ranges::find(characters, std::string_view("="));
    if (equals == characters.end()) fail(bindUsage);
    const std::size_t at = offsetIn(rest, *equals);
    const std::string name = lowercased(withoutOuterBlanks(rest.substr(0, at)));
    const auto param = scriptParamFromKeyword(name);
    if (!param) fail("unknown parameter '" + name + "'");
    script_.bindings.emplace_back(*param, Expr::parse(rest.substr(at + 1), splitter_));
  }

  CharacterSplitter splitter_;
  NimbraScript script_;
};

}  // namespace

const NimbraScript& NimbraScript::empty() {
  static const NimbraScript none;
  return none;
}

std::set<std::string, std::less<>> NimbraScript::channels() const {
  std::set<std::string, std::less<>> names;
  for (const auto& [param, expression] : bindings) {
    for (const Expr::Node& node : expression.nodes()) {
      if (node.kind == Expr::Kind::channel) names.insert(node.name);
    }
  }
  return names;
}

NimbraScript NimbraScript::parse(std::string_view text) {
  const std::string valid = validUtf8(text);
  return ScriptParser().parse(valid);
}

}  // namespace veloria
