#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace veloria {

/// 1 to `most` bytes of UTF-8 without control characters (below U+0020, U+007F to U+009F).
bool isPlainText(std::string_view text, std::size_t most);

/// `text` with A to Z in lower case; all other bytes are kept.
std::string lowerCased(std::string_view text);

/// `text` for a terminal: '?' for each byte that is a control character or not UTF-8, and "..." after the first 300
/// bytes.
std::string printable(std::string_view text);

/// The parts of a text between separators; one empty part for an empty text. The views live as long as the text.
std::vector<std::string_view> splitText(std::string_view text, char separator);

/// `text` without spaces, tabs and carriage returns at both ends.
std::string_view trimmed(std::string_view text);

/// Splits "key = value" at the first '=', both parts trimmed; nothing without '='.
std::optional<std::pair<std::string_view, std::string_view>> keyAndValue(std::string_view line);

}  // namespace veloria
