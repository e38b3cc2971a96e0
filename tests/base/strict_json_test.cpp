#include "base/StrictJson.h"

#include <gmock/gmock.h>

namespace veloria::tests {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

std::string repeated(std::string_view text, std::size_t times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

std::string errorOf(std::string_view bytes) {
  const auto result = parseStrictJson(bytes);
  return result ? "accepted: " + result->dump() : result.error();
}

TEST(StrictJsonTest, ReadsOneValueOfAnyKind) {
  EXPECT_EQ(*parseStrictJson("\xEF\xBB\xBF 7"), 7);
  EXPECT_EQ(*parseStrictJson(R"({"a": 1, "b": 2, "a": 3})"), nlohmann::json({{"a", 3}, {"b", 2}}));
}

TEST(StrictJsonTest, SaysWhereItStoppedUnderstanding) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "line 1, column 1: "},          {"{\"a\": 1,\n  \"b\": }", "line 2, column 8: "},
      {"[1] x", "line 1, column 5: "},     {"// no\n1", "line 1, column 1: "},
      {"\"\xC3(\"", "line 1, column 3: "}, {"1\0 x"s, "line 1, column 2: a zero byte"},
      {"NaN", "line 1, column 1: "},       {"1e999", "a number is too large"},
  };
  for (const auto& [bytes, start] : cases) EXPECT_THAT(errorOf(bytes), StartsWith(start)) << bytes;
  EXPECT_LT(errorOf("\"" + std::string(500'000, 'x')).size(), 200U) << "it repeats what it read";
}

TEST(StrictJsonTest, RefusesDeepNestingOfAnyShape) {
  const auto nested = [](std::size_t depth) { return repeated("[", depth) + repeated("]", depth); };
  EXPECT_TRUE(parseStrictJson(nested(64)));
  EXPECT_THAT(errorOf(nested(65)), StartsWith("line 1, column 65: nested deeper than 64 levels"));
  for (const auto& bytes : {repeated("[", maximumJsonBytes), repeated("{\"a\":", 200'000), repeated("[[]", 1000)}) {
    EXPECT_THAT(errorOf(bytes), HasSubstr("nested deeper"));
  }
  EXPECT_TRUE(parseStrictJson("[" + repeated("[[[]]],", 1000) + "1]")) << "siblings are not nested";
  EXPECT_TRUE(parseStrictJson("\"\\\"" + repeated("[", 1000) + "\"")) << "brackets in a string are text";
}

// Takes minutes if any step is quadratic in the number of members.
TEST(StrictJsonTest, ReadsAMebibyteAndNotOneByteMore) {
  EXPECT_TRUE(parseStrictJson("1" + std::string(maximumJsonBytes - 1, ' ')));
  EXPECT_EQ(errorOf("1" + std::string(maximumJsonBytes, ' ')), "larger than 1048576 bytes");
  std::string object = "{";
  for (int i = 0; object.size() < maximumJsonBytes - 20; ++i) object += "\"k" + std::to_string(i) + "\":{},";
  EXPECT_GT(parseStrictJson(object + "\"z\":0}")->size(), 70'000U);
  EXPECT_EQ(parseStrictJson("{" + repeated("\"a\":1,", maximumJsonBytes / 6 - 2) + "\"a\":2}")->size(), 1U);
}

}  // namespace
}  // namespace veloria::tests
