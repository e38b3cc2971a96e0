#include "Numbers.h"

#include <clocale>
#include <cstdlib>
#include <string_view>

#include <locale.h>
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace veloria {

namespace {

locale_t plainLocale() {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  return plain;
}

// strtod would skip blanks first, line ends among them.
bool canStartNumber(char c) {
  return std::string_view(" \t\n\v\f\r").find(c) == std::string_view::npos;
}

}  // namespace

// std::from_chars refuses a plus sign and "0x", and has no value for what is out of range.
std::optional<double> numberFromText(const std::string& text) {
  if (text.empty() || !canStartNumber(text.front())) return std::nullopt;
  char* end = nullptr;
  const double value = strtod_l(text.c_str(), &end, plainLocale());
  return end == text.c_str() + text.size() ? std::optional(value) : std::nullopt;
}

}  // namespace veloria
