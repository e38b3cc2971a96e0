#include "platform/linux/wallpaper/GsettingsListing.h"

#include <initializer_list>

#include "base/TextLines.h"

namespace veloria {

namespace {

/// A string as GVariant's text form has it: in quotes of either kind, with a backslash before what needs one. Nothing
/// for a value of another type. Escapes that stand for control characters have no place in a path and are refused.
std::optional<std::string> unquoted(std::string_view value) {
  if (value.size() < 2 || (value.front() != '\'' && value.front() != '"') || value.back() != value.front()) {
    return std::nullopt;
  }
  std::string text;
  for (std::size_t i = 1; i + 1 < value.size(); ++i) {
    if (value[i] == '\\') {
      ++i;
      const bool plain = i + 1 < value.size() && (value[i] == '\'' || value[i] == '"' || value[i] == '\\');
      if (!plain) return std::nullopt;
    }
    text += value[i];
  }
  return text;
}

/// Lines are "schema key value".
std::optional<std::string> valueOf(std::string_view listing, std::string_view key) {
  for (const std::string_view line : splitText(listing, '\n')) {
    const auto space = line.find(' ');
    if (space == line.npos) continue;
    const std::string_view rest = line.substr(space + 1);
    if (rest.starts_with(key) && rest.substr(key.size()).starts_with(' ')) {
      return unquoted(trimmed(rest.substr(key.size())));
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> gsettingsPictureFromText(std::string_view listing, bool dark) {
  if (valueOf(listing, "picture-options") == "none") return std::nullopt;
  for (const std::string_view key : {"picture-uri-dark", "picture-uri", "picture-filename"}) {
    if (key == "picture-uri-dark" && !dark) continue;
    auto address = valueOf(listing, key);
    if (address && !address->empty()) return address;
  }
  return std::nullopt;
}

bool gsettingsPrefersDark(std::string_view value) {
  return value.starts_with("'prefer-dark'");
}

}  // namespace veloria
