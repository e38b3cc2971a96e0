// Scene scripts that carry their own expectations. A .scene file holds any number of cases:
//
//     === title
//     channel NAME NUMBER
//     builtin MODE                       the script of a drive mode, in place of one below
//     expect error LINE MESSAGE          parsing fails so
//     expect PARAMETER NUMBER            the value after assignment to the default settings
//     expect binding INDEX NUMBER        the bare value of the INDEXth `bind`, from 1
//     expect constant PARAMETER NUMBER   the bare value of a `set`
//     expect constants|bindings COUNT
//     expect palette none | #rrggbb #rrggbb #rrggbb #rrggbb
//     expect wallpaper yes|no
//     ---
//     the script, to the next title; the line feed before that is no part of it
//
// In messages and scripts \n \r \t \\ \u{HEX} (a code point) and \x{HEX} (a byte) stand for what can't be seen.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "scene/BuiltInScripts.h"
#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace veloria::tests {
namespace {

void appendUtf8(std::string& out, unsigned codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
    return;
  }
  const unsigned trails = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
  out += static_cast<char>((0xFF00U >> (trails + 1) & 0xFFU) | codePoint >> 6 * trails);
  for (unsigned left = trails; left-- > 0;) out += static_cast<char>(0x80U | (codePoint >> 6 * left & 0x3FU));
}

std::string unescaped(const std::string& text) {
  std::string out;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      out += text[at];
      continue;
    }
    const char kind = text.at(++at);
    if (const auto plain = std::string_view("nrt\\").find(kind); plain != std::string_view::npos) {
      out += "\n\r\t\\"[plain];
      continue;
    }
    const auto close = text.find('}', at);
    const auto value = static_cast<unsigned>(std::stoul(text.substr(at + 2, close - at - 2), nullptr, 16));
    kind == 'u' ? appendUtf8(out, value) : out.push_back(static_cast<char>(value));
    at = close;
  }
  return out;
}

struct Case {
  std::string place;
  ChannelValues channels;
  std::vector<std::string> expectations;
  std::string script;
};

void readHeader(Case& result, const std::string& line) {
  std::istringstream words(line);
  std::string kind, name;
  double value = 0;
  words >> kind >> name;
  if (kind == "expect") {
    result.expectations.push_back(line.substr(7));
  } else if (kind == "channel" && words >> value) {
    result.channels[name] = value;
  } else if (kind == "builtin") {
    result.script = builtInScript(fromRawValue<Visualizer>(name).value());
  } else {
    throw std::runtime_error(result.place + ": " + line);
  }
}

std::vector<Case> loadCases() {
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(VELORIA_TEST_DATA "/language")) {
    if (entry.is_regular_file()) files.insert(entry.path());
  }
  std::vector<Case> cases;
  for (const auto& file : files) {
    std::ifstream in(file);
    bool header = false;
    const char* separator = "";
    for (std::string line; std::getline(in, line);) {
      if (line.starts_with("=== ")) {
        cases.push_back({file.filename().string() + ": " + line.substr(4), {}, {}, {}});
        header = true;
        separator = "";
      } else if (header && line != "---") {
        readHeader(cases.back(), line);
      } else if (header) {
        header = false;
      } else {
        cases.back().script += separator + unescaped(line);
        separator = "\n";
      }
    }
  }
  return cases;
}

ScriptParam param(const std::string& keyword) {
  return scriptParamFromKeyword(keyword).value();
}

void expectNumber(double actual, const std::string& expected) {
  const double number = std::stod(expected);
  if (std::isnan(number) && std::isnan(actual)) return;
  EXPECT_DOUBLE_EQ(actual, number);
}

void expectPalette(const NimbraScript& script, std::istringstream& words) {
  std::vector<ColorStop> colors;
  for (std::string word; words >> word;) {
    if (const auto color = colorFromHex(word)) colors.push_back(*color);
  }
  EXPECT_EQ(script.paletteStops, fourStops(colors));
}

void check(const NimbraScript& script, const Case& given, const std::string& expectation) {
  SCOPED_TRACE("expect " + expectation);
  std::istringstream words(expectation);
  std::string what, first, second;
  words >> what;
  if (what == "palette") return expectPalette(script, words);
  words >> first >> second;
  if (what == "wallpaper") {
    EXPECT_EQ(script.paletteFromWallpaper, first == "yes");
  } else if (what == "constants") {
    EXPECT_EQ(script.constants.size(), std::stoul(first));
  } else if (what == "bindings") {
    EXPECT_EQ(script.bindings.size(), std::stoul(first));
  } else if (what == "constant") {
    expectNumber(script.constants.at(param(first)), second);
  } else if (what == "binding") {
    expectNumber(script.bindings.at(std::stoul(first) - 1).second.eval(given.channels), second);
  } else {
    expectNumber(reportOn(script, given.channels).values[static_cast<std::size_t>(param(what))].second, first);
  }
}

TEST(Language, DoesWhatTheFilesExpect) {
  const auto cases = loadCases();
  EXPECT_GT(cases.size(), 100U);
  for (const Case& given : cases) {
    SCOPED_TRACE(given.place);
    const std::string& first = given.expectations.at(0);
    try {
      const NimbraScript script = NimbraScript::parse(given.script);
      for (const auto& expectation : given.expectations) check(script, given, expectation);
    } catch (const ScriptError& error) {
      EXPECT_EQ("error " + std::to_string(error.line) + " " + error.message, unescaped(first));
      EXPECT_EQ(error.description(), "Line " + std::to_string(error.line) + ": " + error.message);
    }
  }
}

}  // namespace
}  // namespace veloria::tests
