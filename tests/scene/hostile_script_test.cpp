// Scripts that are deep, wide or a megabyte long. Nothing here looks at a clock: what took time in proportion to the
// square of its length would not come back.

#include <gmock/gmock.h>
#include <pthread.h>

#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace veloria::tests {
namespace {

constexpr int million = 1'000'000;
const std::string tooDeep = "Line 1: expression nested deeper than 200 levels";
const std::string tooLarge = "Line 1: expression larger than 10000 nodes";

std::string repeated(std::string_view part, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += part;
  return text;
}

std::string errorOf(const std::string& script) {
  try {
    NimbraScript::parse(script);
  } catch (const ScriptError& error) {
    return error.description();
  }
  return "none";
}

std::string bindError(const std::string& expression) {
  return errorOf("bind glow = " + expression);
}

double bound(const std::string& expression) {
  const NimbraScript script = NimbraScript::parse("bind glow = " + expression);
  return NimbraScript(script).bindings.at(0).second.eval({});
}

std::string nested(std::string_view open, std::string_view inside, std::string_view close, int levels) {
  return repeated(open, levels) + std::string(inside) + repeated(close, levels);
}

TEST(HostileScript, TwoHundredLevelsWhateverNests) {
  for (const std::string_view open : {"(", "-", "+", "2^", "sin(", "max(1,", "1+(", "-(", "(((-"}) {
    EXPECT_EQ(bindError(repeated(open, million)), tooDeep) << open;
  }
  const struct {
    const char *open, *inside, *close;
    int levels;
    double value;
  } cases[] = {{"(", "7", ")", 200, 7},     {"-", "7", "", 200, 7},
               {"1^", "7", "", 200, 1},     {"abs(", "-7", ")", 199, 7},
               {"1+(", "1", ")", 200, 201}, {"max(1,2,3,", "9", ")", 200, 2}};  // every operand waits for its operator
  for (const auto& [open, inside, close, levels, value] : cases) {
    EXPECT_EQ(bound(nested(open, inside, close, levels)), value) << open;
    EXPECT_EQ(bindError(nested(open, inside, close, levels + 1)), tooDeep) << open;
  }
  EXPECT_EQ(bound(repeated(nested("(", "1", ")", 150) + "+", 10) + nested("-", "1", "", 200)), 11) << "levels are left";
}

TEST(HostileScript, TenThousandNodesAreFine) {
  EXPECT_EQ(bound("+" + repeated("1+", 4999) + "1"), 5000);
  EXPECT_EQ(bindError(repeated("1+", 5000) + "1"), tooLarge);
  EXPECT_EQ(bindError("f(" + repeated("a,", million) + "a)"), tooLarge);
}

#if defined(__SANITIZE_ADDRESS__)
constexpr std::size_t frameGrowth = 8;  // the sanitizer's guards make frames several times as large
#else
constexpr std::size_t frameGrowth = 1;
#endif

TEST(HostileScript, TheDeepestExpressionsFitTheSmallestStackOfAThread) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 512 * 1024 * frameGrowth), 0);  // macOS gives this
  pthread_t thread{};
  const auto work = [](void*) -> void* {
    const std::string sum = repeated("1+", 4000) + "1";
    EXPECT_EQ(bound(nested("(", sum, ")", 200)), 4001);
    EXPECT_EQ(bound(nested("max(0,", sum, ")", 199)), 4001);
    EXPECT_EQ(bindError(repeated("f(", million)), tooDeep);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, work, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(HostileScript, AMegabyteOnOneLineIsNoTrouble) {
  const std::string spaces(maxScriptBytes, ' '), word(maxScriptBytes, 'x');
  for (const auto& script :
       {"set glow 1" + spaces + "x", std::string(maxScriptBytes, '/'), "palette" + repeated(" #112233", 130'000)}) {
    EXPECT_EQ(errorOf(script), "none");
  }
  EXPECT_EQ(bindError(spaces), "Line 1: expression ended early");
  EXPECT_EQ(bound("0." + std::string(maxScriptBytes, '0') + "1"), 0);
  EXPECT_EQ(bound(word), 0);
  EXPECT_EQ(errorOf(word), "Line 1: unknown command '" + word + "'");
  for (const std::string part : {"\u0301", "\U0001F468\u200D\U0001F469\u200D", "\u3000", "\xFF"}) {
    const std::string many = repeated(part, static_cast<int>(maxScriptBytes / part.size()));
    EXPECT_NE(errorOf("set glow " + many + "."), "none");
    EXPECT_NE(bindError("1 " + many + "."), "none");
  }
}

TEST(HostileScript, AMegabyteOfLinesIsNoTroubleAndMoreIsRefusedUnread) {
  EXPECT_EQ(errorOf(std::string(maxScriptBytes, '\n') + "x"),
            "Line " + std::to_string(maxScriptBytes + 1) + ": unknown command 'x'");
  const NimbraScript script = NimbraScript::parse(repeated("bind glow=\u00e9\n", 70'000));
  EXPECT_EQ(script.bindings.size(), 70'000U);
  EXPECT_EQ(reportOn(script, {{"\u00e9", 2}}).values[7].second, 2);
  EXPECT_EQ(scriptSizeError(maxScriptBytes), std::nullopt);
  EXPECT_THAT(scriptSizeError(maxScriptBytes + 1).value_or(""), testing::HasSubstr("1048577"));
}

}  // namespace
}  // namespace veloria::tests
