#include "base/TextLines.h"

namespace veloria {

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
