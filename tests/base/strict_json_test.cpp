#include "base/StrictJson.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace veloria {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  result.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) result += text;
  return result;
}

std::string errorOf(std::string_view bytes) {
  const auto result = parseStrictJson(bytes);
  return result ? "accepted: " + result->dump() : result.error();
}

TEST(StrictJsonTest, ReadsOneValueOfAnyKind) {
  EXPECT_EQ(*parseStrictJson(" {\"a\": [1, -2.5, true, null, \"\\u00e9\"]}\n"),
            nlohmann::json::parse(R"({"a": [1, -2.5, true, null, "é"]})"));
  EXPECT_EQ(*parseStrictJson("\xEF\xBB\xBF 7"), 7);
  EXPECT_EQ(*parseStrictJson(R"({"a": 1, "b": 2, "a": 3})"), nlohmann::json({{"a", 3}, {"b", 2}}));
}

TEST(StrictJsonTest, SaysWhereItStoppedUnderstanding) {
  struct Case {
    std::string bytes;
    std::string start;
  };
  const std::vector<Case> cases{
      {"", "line 1, column 1: "},
      {" \n\t", "line 2, column 2: "},
      {"{\"a\": 1,\n  \"b\": }", "line 2, column 8: "},
      {"[1, 2", "line 1, column 6: "},
      {"[1] x", "line 1, column 5: "},
      {"{} {}", "line 1, column 4: "},
      {"[01]", "line 1, column 3: "},
      {"[1,]", "line 1, column 4: "},
      {"'a'", "line 1, column 1: "},
      {"// no\n1", "line 1, column 1: "},
      {"NaN", "line 1, column 1: "},
      {"\"\xC3(\"", "line 1, column 3: "},
      {"\"\xED\xA0\x80\"", "line 1, column 3: "},
      {"\"\\ud800\"", "line 1, column "},
      {"\"a\nb\"", "line 1, column "},
      {std::string("1\0 x", 4), "line 1, column 2: "},
      {std::string("\"a\0\"", 4), "line 1, column 3: "},
  };
  for (const Case& c : cases) EXPECT_THAT(errorOf(c.bytes), StartsWith(c.start)) << testing::PrintToString(c.bytes);
  EXPECT_THAT(errorOf("1e999"), HasSubstr("too large"));
}

TEST(StrictJsonTest, NeverRepeatsWhatItReadInItsError) {
  const std::string error = errorOf("\"" + std::string(500'000, 'x'));
  EXPECT_THAT(error, StartsWith("line 1, column "));
  EXPECT_LT(error.size(), 200U);
}

TEST(StrictJsonTest, RefusesDeepNestingOfAnyShape) {
  const auto nested = [](std::size_t depth) { return repeated("[", depth) + repeated("]", depth); };
  EXPECT_TRUE(parseStrictJson(nested(64)));
  EXPECT_THAT(errorOf(nested(65)), StartsWith("line 1, column 65: nested deeper than 64 levels"));
  EXPECT_THAT(errorOf(repeated("[", maximumJsonBytes)), HasSubstr("nested deeper"));
  EXPECT_THAT(errorOf(repeated("{\"a\":", 200'000)), HasSubstr("nested deeper"));
  EXPECT_THAT(errorOf(repeated("[[]", 1000)), HasSubstr("nested deeper"));
  EXPECT_TRUE(parseStrictJson("[" + repeated("[[[]]],", 1000) + "1]")) << "siblings are not nested";
  EXPECT_TRUE(parseStrictJson("\"\\\"" + repeated("[", 1000) + "\"")) << "brackets in a string are text";
}

TEST(StrictJsonTest, RefusesTooManyBytesUnread) {
  EXPECT_THAT(errorOf(repeated("[", 50'000'000)), StartsWith("larger than 1048576 bytes"));
  EXPECT_TRUE(parseStrictJson("1" + std::string(maximumJsonBytes - 1, ' ')));
  EXPECT_FALSE(parseStrictJson("1" + std::string(maximumJsonBytes, ' ')));
}

/// Takes minutes when any step is quadratic in the number of members.
TEST(StrictJsonTest, ReadsAMebibyteOfSmallMembersWithoutEffort) {
  std::string object = "{";
  for (int i = 0; object.size() < maximumJsonBytes - 20; ++i) object += "\"k" + std::to_string(i) + "\":{},";
  EXPECT_GT(parseStrictJson(object + "\"z\":0}")->size(), 70'000U);
  EXPECT_GT(parseStrictJson("[" + repeated("{},", maximumJsonBytes / 3 - 2) + "0]")->size(), 340'000U);
  EXPECT_EQ(parseStrictJson("{" + repeated("\"a\":1,", maximumJsonBytes / 6 - 2) + "\"a\":2}")->size(), 1U);
}

}  // namespace
}  // namespace veloria
