#include "ScriptText.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <locale.h>
#ifdef __APPLE__
#include <xlocale.h>
#endif
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

namespace veloria {

namespace {

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

bool allAscii(std::string_view text) {
  return std::ranges::all_of(text, isAscii);
}

bool isTrailByte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

icu::UnicodeString utf16(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::size_t firstCodePointLength(std::string_view text) {
  std::size_t length = 1;
  while (length < text.size() && isTrailByte(text[length])) ++length;
  return length;
}

std::size_t lastCodePointStart(std::string_view text) {
  std::size_t start = text.size() - 1;
  while (start > 0 && isTrailByte(text[start])) --start;
  return start;
}

UChar32 firstCodePoint(std::string_view text) {
  if (isAscii(text.front())) return text.front();
  return utf16(text.substr(0, firstCodePointLength(text))).char32At(0);
}

bool isBlank(std::string_view codePoint) {
  if (codePoint == " " || codePoint == "\t") return true;
  return !isAscii(codePoint.front()) && u_charType(firstCodePoint(codePoint)) == U_SPACE_SEPARATOR;
}

/// Bytes of the line end that `text` starts with, 0 for none.
std::size_t lineEndLength(std::string_view text) {
  if (text.front() >= '\n' && text.front() <= '\r') return 1;
  if (text.starts_with("\xC2\x85")) return 2;
  if (text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9")) return 3;
  return 0;
}

void require(UErrorCode status) {
  if (U_FAILURE(status)) throw std::runtime_error(std::string("Unicode support: ") + u_errorName(status));
}

locale_t plainLocale() {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  return plain;
}

// strtod would skip blanks first, line ends among them.
bool canStartNumber(char c) {
  return std::string_view(" \t\n\v\f\r").find(c) == std::string_view::npos;
}

}  // namespace

Characters CharacterSplitter::split(std::string_view text) {
  Characters characters;
  if (allAscii(text)) {
    characters.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) characters.push_back(text.substr(i, 1));
  } else {
    appendSegmented(text, characters);
  }
  return characters;
}

void CharacterSplitter::appendSegmented(std::string_view text, Characters& characters) {
  UErrorCode status = U_ZERO_ERROR;
  if (!iterator_) iterator_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  require(status);
  const icu::LocalUTextPointer source(utext_openUTF8(nullptr, text.data(), static_cast<int64_t>(text.size()), &status));
  require(status);
  iterator_->setText(source.getAlias(), status);
  require(status);
  int32_t start = iterator_->first();
  for (int32_t end = iterator_->next(); end != icu::BreakIterator::DONE; start = end, end = iterator_->next()) {
    characters.push_back(text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
  }
}

std::string validUtf8(std::string_view text) {
  std::string valid;
  if (allAscii(text)) return valid.assign(text);
  utf16(text).toUTF8String(valid);
  return valid;
}

std::string lowercased(std::string_view text) {
  std::string lower;
  if (allAscii(text)) {
    lower.resize(text.size());
    std::ranges::transform(text, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  } else {
    utf16(text).toLower(icu::Locale::getRoot()).toUTF8String(lower);
  }
  return lower;
}

std::string_view withoutOuterBlanks(std::string_view text) {
  while (!text.empty() && isBlank(text.substr(0, firstCodePointLength(text)))) {
    text.remove_prefix(firstCodePointLength(text));
  }
  while (!text.empty() && isBlank(text.substr(lastCodePointStart(text)))) {
    text = text.substr(0, lastCodePointStart(text));
  }
  return text;
}

std::vector<std::string_view> splitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  std::size_t start = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = lineEndLength(text.substr(at));
    if (length > 0) {
      lines.push_back(text.substr(start, at - start));
      start = at + length;
    }
    at += std::max<std::size_t>(length, 1);
  }
  lines.push_back(text.substr(start));
  return lines;
}

bool isNumeric(std::string_view character) {
  return u_getIntPropertyValue(firstCodePoint(character), UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

bool isLetter(std::string_view character) {
  return u_isUAlphabetic(firstCodePoint(character)) != 0;
}

// std::from_chars refuses a plus sign and "0x", and has no value for what is out of range.
std::optional<double> numberFromText(const std::string& text) {
  if (text.empty() || !canStartNumber(text.front())) return std::nullopt;
  char* end = nullptr;
  const double value = strtod_l(text.c_str(), &end, plainLocale());
  return end == text.c_str() + text.size() ? std::optional(value) : std::nullopt;
}

}  // namespace veloria
