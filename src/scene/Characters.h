#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/brkiter.h>

/// Text as people see it: characters are extended grapheme clusters, as views into the text they came from. Texts are
/// valid UTF-8 here; see validUtf8().
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

/// `text` with what is not UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// Lower case by the rules of no language in particular.
std::string lowercased(std::string_view text);

/// Without blanks at both ends: the tab and every space separator of Unicode, no line ends.
std::string_view withoutOuterBlanks(std::string_view text);

/// The lines between line ends. Each line end counts for itself, so a carriage return and a line feed have an empty
/// line between them. Line ends: U+000A to U+000D, U+0085, U+2028, U+2029.
std::vector<std::string_view> splitLines(std::string_view text);

/// A character is numeric, or a letter, by its first code point: one with a numeric type (digits, fractions, Roman
/// numerals, ideographs that are numbers), one that is alphabetic. Some are both.
bool isNumeric(std::string_view character);
bool isLetter(std::string_view character);

/// The byte offset in `text` of one of its characters.
inline std::size_t offsetIn(std::string_view text, std::string_view character) {
  return static_cast<std::size_t>(character.data() - text.data());
}

}  // namespace veloria
