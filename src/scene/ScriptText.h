#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>

/// The text of scripts. Characters are extended grapheme clusters, as views into the text they came from. Texts must be
/// valid UTF-8; see validUtf8().
namespace veloria {

using Characters = std::vector<std::string_view>;

/// Splits text into characters. Not thread safe; throws std::runtime_error when the Unicode tables are missing.
class CharacterSplitter {
 public:
  Characters split(std::string_view text);

 private:
  void appendSegmented(std::string_view text, Characters& characters);

  std::unique_ptr<icu::BreakIterator> iterator_;  // made at the first text that is not ASCII
};

/// `text` with U+FFFD for everything that is not UTF-8.
std::string validUtf8(std::string_view text);

/// In lower case, by no language's own rules.
std::string lowercased(std::string_view text);

/// Without blanks at both ends. Blanks are the tab and Unicode's space separators, not line ends.
std::string_view withoutOuterBlanks(std::string_view text);

/// The lines between line ends. Each line end counts for itself, so a carriage return and a line feed have an empty
/// line between them. Line ends: U+000A to U+000D, U+0085, U+2028, U+2029.
std::vector<std::string_view> splitLines(std::string_view text);

/// Decided by the first code point: whether it has a numeric type (digits, fractions, Roman numerals, ideographs that
/// are numbers), or is alphabetic. Some are both.
bool isNumeric(std::string_view character);
bool isLetter(std::string_view character);

/// The number that the whole text is, independent of the locale: a sign, decimal or hexadecimal digits ("0x1.8p3"),
/// a point, an exponent, "inf", "infinity" or "nan" in either case. Too large becomes infinite, too small 0. No blanks.
std::optional<double> numberFromText(const std::string& text);

/// The byte offset in `text` of one of its characters.
inline std::size_t offsetIn(std::string_view text, std::string_view character) {
  return static_cast<std::size_t>(character.data() - text.data());
}

}  // namespace veloria
