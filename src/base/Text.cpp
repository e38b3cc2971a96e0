#include "base/Text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace veloria {

namespace {

constexpr std::size_t longestShown = 300;

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

/// The length of the text's first `most` bytes, without an incomplete character at the end.
std::size_t wholeCharacters(std::string_view text, std::size_t most) {
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) --most;
  return most;
}

}  // namespace

bool isPlainText(std::string_view text, std::size_t most) {
  return !text.empty() && text.size() <= most && !hasControls(text) && isUtf8(text);
}

std::string lowerCased(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

std::string printable(std::string_view text) {
  const bool whole = text.size() <= longestShown;
  std::string result(whole ? text : text.substr(0, wholeCharacters(text, longestShown)));
  if (hasControls(result) || !isUtf8(result)) {
    std::ranges::replace_if(
        result, [](char c) { return isControl(c) || static_cast<unsigned char>(c) >= 0x80; }, '?');
  }
  return whole ? result : result + "...";
}

std::vector<std::string_view> splitText(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const auto end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == text.npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const auto start = text.find_first_not_of(blanks);
  if (start == text.npos) return {};
  return text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

std::optional<std::pair<std::string_view, std::string_view>> keyAndValue(std::string_view line) {
  const auto equals = line.find('=');
  if (equals == line.npos) return std::nullopt;
  return std::pair(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
}

}  // namespace veloria
