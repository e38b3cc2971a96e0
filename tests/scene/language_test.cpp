#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "language_case.h"
#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace veloria::test {
namespace {

void expectNumber(double actual, const std::string& expected) {
  const double number = std::stod(expected);
  if (std::isnan(number)) {
    EXPECT_TRUE(std::isnan(actual)) << actual;
  } else {
    EXPECT_DOUBLE_EQ(actual, number);
  }
}

ScriptParam param(const std::string& keyword) {
  const auto found = scriptParamFromKeyword(keyword);
  if (!found) throw std::runtime_error("not an expectation: " + keyword);
  return *found;
}

std::optional<FourStops> readPalette(std::istringstream& words) {
  std::vector<ColorStop> colors;
  for (std::string word; words >> word;) {
    if (const auto color = colorFromHex(word)) colors.push_back(*color);
  }
  return fourStops(colors);
}

double assignedValue(const NimbraScript& script, const LanguageCase& given, ScriptParam param) {
  return reportOn(script, given.channels).values[static_cast<std::size_t>(param)].second;
}

void check(const NimbraScript& script, const LanguageCase& given, const std::string& expectation) {
  SCOPED_TRACE("expect " + expectation);
  std::istringstream words(expectation);
  std::string what, first, second;
  words >> what;
  if (what == "palette") {
    EXPECT_EQ(script.paletteStops, readPalette(words));
    return;
  }
  words >> first >> second;
  if (what == "wallpaper") {
    EXPECT_EQ(script.paletteFromWallpaper, first == "yes");
  } else if (what == "constants") {
    EXPECT_EQ(script.constants.size(), std::stoul(first));
  } else if (what == "bindings") {
    EXPECT_EQ(script.bindings.size(), std::stoul(first));
  } else if (what == "constant") {
    ASSERT_TRUE(script.constants.contains(param(first)));
    expectNumber(script.constants.at(param(first)), second);
  } else if (what == "binding") {
    const std::size_t index = std::stoul(first);
    ASSERT_LE(index, script.bindings.size());
    expectNumber(script.bindings[index - 1].second.eval(given.channels), second);
  } else {
    expectNumber(assignedValue(script, given, param(what)), first);
  }
}

std::string errorOf(const std::string& script) {
  try {
    NimbraScript::parse(script);
    return "no error";
  } catch (const ScriptError& error) {
    EXPECT_EQ(error.description(), "Line " + std::to_string(error.line) + ": " + error.message);
    return std::to_string(error.line) + " " + error.message;
  }
}

class Language : public testing::TestWithParam<LanguageCase> {};

TEST_P(Language, DoesWhatTheFileExpects) {
  const LanguageCase& given = GetParam();
  constexpr std::string_view error = "error ";
  if (given.expectations.front().starts_with(error)) {
    EXPECT_EQ(errorOf(given.script), unescaped(given.expectations.front().substr(error.size())));
    return;
  }
  const NimbraScript script = NimbraScript::parse(given.script);
  EXPECT_THAT(script.warnings, testing::IsEmpty());
  for (const auto& expectation : given.expectations) check(script, given, expectation);
}

INSTANTIATE_TEST_SUITE_P(Scripts, Language, testing::ValuesIn(loadLanguageCases(VELORIA_TEST_DATA "/language")));

}  // namespace
}  // namespace veloria::test
