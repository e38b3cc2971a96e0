#include "base/PlainNumber.h"

#include <charconv>
#include <cmath>
#include <version>

#if !defined(__cpp_lib_to_chars) || defined(VELORIA_PORTABLE_CALLS)
#include <locale.h>
#include <cstdlib>
#include <string>
#ifdef __APPLE__
#include <xlocale.h>
#endif
#endif

namespace veloria {

namespace {

#if defined(__cpp_lib_to_chars) && !defined(VELORIA_PORTABLE_CALLS)

std::optional<double> parse(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

#else

bool hasSignificantDigit(std::string_view text) {
  return text.substr(0, text.find_first_of("eE")).find_first_of("123456789") != std::string_view::npos;
}

// strtod would take blanks, plus signs and hexadecimal digits too, and 0 for what is too small.
std::optional<double> parse(std::string_view text) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string copy(text);
  if (copy.find_first_not_of("0123456789.eE+-") != std::string::npos || copy.starts_with('+')) return std::nullopt;
  char* end = nullptr;
  const double value = strtod_l(copy.c_str(), &end, plain);
  if (end != copy.c_str() + copy.size()) return std::nullopt;
  if (value == 0 && hasSignificantDigit(text)) return std::nullopt;
  return value;
}

#endif

}  // namespace

std::optional<double> plainNumber(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const auto value = parse(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

}  // namespace veloria
