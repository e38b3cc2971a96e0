#pragma once

#include <optional>
#include <string_view>

namespace veloria {

/// The number that the whole text is: decimal, with a point whatever the language, perhaps with a minus sign and an
/// exponent. Nothing for all else: blanks, a plus sign, hexadecimal digits, what is not finite or too small to tell
/// from 0. Any thread.
std::optional<double> plainNumber(std::string_view text);

}  // namespace veloria
