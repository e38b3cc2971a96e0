#pragma once

#include <optional>
#include <string_view>

namespace veloria {

/// The number that the whole text is: decimal, with a point in every language, optionally with a minus sign and an
/// exponent. Nothing for anything else: blanks, a plus sign, hexadecimal digits, values that are not finite or too
/// small to differ from 0. Any thread.
std::optional<double> plainNumber(std::string_view text);

}  // namespace veloria
