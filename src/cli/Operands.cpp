#include "cli/Operands.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/PlainNumber.h"
#include "cli/UsageError.h"
#include "scene/ColorStops.h"

namespace veloria::cli {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 6> reservedNames{{
    {"palette", "the palette, which 'nimbra palette' sets"},
    {"alert_until", "the flash of a failure, which 'nimbra fail' starts"},
    {"alert_for", "the flash of a failure, which 'nimbra fail' starts"},
    {"alert_palette", "the flash of a failure, which 'nimbra fail' starts"},
    {"sessions", "the sessions, which --session names"},
    {"expires", "a session's end, which --ttl sets"},
}};

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

/// In UTF-8, U+0080 to U+009F are 0xC2 and one more byte.
bool hasControls(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isControl(text[i])) return true;
    const bool latin = text[i] == '\xC2' && i + 1 < text.size();
    if (latin && static_cast<unsigned char>(text[i + 1]) < 0xA0) return true;
  }
  return false;
}

bool isUtf8(std::string_view text) {
  try {
    static_cast<void>(nlohmann::json(text).dump());  // refuses what is not
    return true;
  } catch (const nlohmann::json::exception&) {
    return false;
  }
}

std::string inQuotes(std::string_view text) {
  return "'" + printable(text) + "'";
}

void requireName(std::string_view what, const std::string& text) {
  if (isPlainText(text, longestName)) return;
  throw UsageError(inQuotes(text) + " can't be a " + std::string(what) + "'s name: 1 to " +
                   std::to_string(longestName) + " bytes of UTF-8 without control characters.");
}

}  // namespace

bool isPlainText(std::string_view text, std::size_t most) {
  return !text.empty() && text.size() <= most && !hasControls(text) && isUtf8(text);
}

std::string printable(std::string_view text) {
  std::string result(text);
  if (isUtf8(text) && !hasControls(text)) return result;
  std::ranges::replace_if(
      result, [](char c) { return isControl(c) || static_cast<unsigned char>(c) >= 0x80; }, '?');
  return result;
}

std::optional<std::string_view> reservedMeaning(std::string_view name) {
  for (const auto& [reserved, meaning] : reservedNames) {
    if (name == reserved) return meaning;
  }
  return std::nullopt;
}

std::string channelName(const std::string& text) {
  requireName("channel", text);
  if (const auto meaning = reservedMeaning(text)) {
    throw UsageError(inQuotes(text) + " can't be a channel's name: it stands for " + std::string(*meaning) + ".");
  }
  return text;
}

std::string sessionName(const std::string& text) {
  requireName("session", text);
  return text;
}

double finiteNumber(std::string_view what, const std::string& text) {
  std::string_view digits = text;
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  if (const auto value = plainNumber(digits)) return *value;
  throw UsageError(std::string(what) + " " + inQuotes(text) + " is not a number such as 1 or 0.25.");
}

double lifetime(const std::string& text) {
  const double seconds = finiteNumber("--ttl", text);
  if (seconds <= 0) throw UsageError("--ttl " + inQuotes(text) + " is not a number of seconds above 0.");
  return seconds;
}

std::optional<std::string> normalisedColour(std::string_view text) {
  if (!colorFromHex(text)) return std::nullopt;
  if (text.starts_with('#')) text.remove_prefix(1);
  std::string colour = "#" + std::string(text);
  for (char& c : colour) {
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
  }
  return colour;
}

std::vector<std::string> paletteColours(const std::vector<std::string>& texts) {
  if (texts.size() < 2 || texts.size() > 4) {
    throw UsageError("a palette has 2 to 4 colours such as '#ff0055', here are " + std::to_string(texts.size()) +
                     "; 'nimbra palette clear' takes it away.");
  }
  std::vector<std::string> colours;
  for (const auto& text : texts) {
    const auto colour = normalisedColour(text);
    if (!colour) throw UsageError(inQuotes(text) + " is not a colour such as '#ff0055'.");
    colours.push_back(*colour);
  }
  return colours;
}

}  // namespace veloria::cli
