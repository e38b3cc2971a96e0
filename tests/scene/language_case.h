#pragma once

#include <filesystem>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

/// Scene scripts that carry their own expectation. A .scene file holds any number of cases:
///
///     === title
///     channel NAME NUMBER
///     expect error LINE MESSAGE          parsing fails so
///     expect PARAMETER NUMBER            the value after assignment to the default settings
///     expect binding INDEX NUMBER        the bare value of the INDEXth `bind`, from 1
///     expect constant PARAMETER NUMBER   the bare value of a `set`
///     expect constants|bindings COUNT
///     expect palette none | #rrggbb #rrggbb #rrggbb #rrggbb
///     expect wallpaper yes|no
///     ---
///     the script, to the next title; the line feed before that is no part of it
///
/// In messages and scripts \n \r \t \\ \u{HEX} (a code point) and \x{HEX} (a byte) stand for what can't be seen.
namespace veloria::test {

struct LanguageCase {
  std::string file;
  int line = 0;  ///< of the title
  std::string title;
  std::map<std::string, double, std::less<>> channels;
  std::vector<std::string> expectations;
  std::string script;
};

/// All cases below a folder, sorted by file. Throws std::runtime_error on a file that is not as above, and when there
/// are none.
std::vector<LanguageCase> loadLanguageCases(const std::filesystem::path& folder);

std::string unescaped(const std::string& text);

std::ostream& operator<<(std::ostream& out, const LanguageCase& languageCase);

}  // namespace veloria::test
