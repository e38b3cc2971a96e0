#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace veloria {

/// The parts of a text between separators; one empty part for an empty text. The views live as long as the text.
std::vector<std::string_view> splitText(std::string_view text, char separator);

/// `text` without spaces, tabs and carriage returns at both ends.
std::string_view trimmed(std::string_view text);

/// Splits "key = value" at the first '=', both parts trimmed; nothing without '='.
std::optional<std::pair<std::string_view, std::string_view>> keyAndValue(std::string_view line);

}  // namespace veloria
