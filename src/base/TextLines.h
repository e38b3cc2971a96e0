#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace veloria {

/// The parts of a text between separators; one empty part for an empty text. The views live as long as the text.
std::vector<std::string_view> splitText(std::string_view text, char separator);

/// Without the spaces, tabs and carriage returns at both ends.
std::string_view trimmed(std::string_view text);

/// "key = value" at its first '=', both trimmed; nothing without one.
std::optional<std::pair<std::string_view, std::string_view>> keyAndValue(std::string_view line);

}  // namespace veloria
