#include "cli/Operands.h"

#include <array>
#include <cstdio>
#include <utility>

#include "agent/StateMembers.h"
#include "base/Color.h"
#include "base/ExitCode.h"
#include "base/PlainNumber.h"
#include "base/Text.h"

namespace veloria::cli {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 6> reservedNames{{
    {paletteKey, "the palette, which 'nimbra palette' sets"},
    {alertUntilKey, "the flash of a failure, which 'nimbra fail' starts"},
    {alertForKey, "the flash of a failure, which 'nimbra fail' starts"},
    {alertPaletteKey, "the flash of a failure, which 'nimbra fail' starts"},
    {sessionsKey, "the sessions, which --session names"},
    {expiresKey, "a session's end, which --ttl sets"},
}};

std::string inQuotes(std::string_view text) {
  return "'" + printable(text) + "'";
}

void requireName(std::string_view what, const std::string& text) {
  if (isPlainText(text, longestName)) return;
  throw UsageError(inQuotes(text) + " is not a valid " + std::string(what) + " name: use 1 to " +
                   std::to_string(longestName) + " bytes of UTF-8 without control characters.");
}

}  // namespace

std::optional<std::string_view> reservedMeaning(std::string_view name) {
  for (const auto& [reserved, meaning] : reservedNames) {
    if (name == reserved) return meaning;
  }
  return std::nullopt;
}

std::string channelName(const std::string& text) {
  requireName("channel", text);
  if (const auto meaning = reservedMeaning(text)) {
    throw UsageError(inQuotes(text) + " is not a valid channel name: it is reserved for " + std::string(*meaning) +
                     ".");
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

std::optional<std::string> normalizedColor(std::string_view text) {
  const auto rgb = rgbFromHex(text);
  if (!rgb) return std::nullopt;
  std::array<char, 8> color{};
  std::snprintf(color.data(), color.size(), "#%06x", *rgb);
  return color.data();
}

std::vector<std::string> paletteColors(const std::vector<std::string>& texts) {
  if (texts.size() < 2 || texts.size() > 4) {
    throw UsageError("expected 2 to 4 colours such as '#ff0055', got " + std::to_string(texts.size()) +
                     ". 'nimbra palette clear' removes the palette.");
  }
  std::vector<std::string> colors;
  for (const auto& text : texts) {
    const auto color = normalizedColor(text);
    if (!color) throw UsageError(inQuotes(text) + " is not a colour such as '#ff0055'.");
    colors.push_back(*color);
  }
  return colors;
}

}  // namespace veloria::cli
