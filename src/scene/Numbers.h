#pragma once

#include <optional>
#include <string>

namespace veloria {

/// The number that the whole text stands for, whatever the locale: a sign, decimal or hexadecimal digits ("0x1.8p3"),
/// a point, an exponent, "inf", "infinity" or "nan" in either case. Too large becomes infinite, too small 0. No blanks.
std::optional<double> numberFromText(const std::string& text);

}  // namespace veloria
