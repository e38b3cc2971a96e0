#include "main/commands/Arguments.h"

#include <gtest/gtest.h>

#include <functional>

#include "main/commands/Command.h"

namespace veloria::tests {
namespace {

TEST(Arguments, RightOnesAreRead) {
  EXPECT_EQ(parsePixelSize("--size", "1x16384"), (gpu::Size{1, 16384}));
  EXPECT_EQ(parseExtent("--notch", "200.5x32"), (Extent{200.5, 32}));
  EXPECT_EQ(parseNumber("--fps", "+29.97", 1, 240), 29.97);
  EXPECT_EQ(parseCount("--frames", "300", 10, 1000), 300);
  EXPECT_EQ(parseAssignment("--set", "a=b=c"), (std::pair<std::string, std::string>{"a", "b=c"}));
  EXPECT_EQ(parseChannel("--channel", "Bass=-0.5"), (std::pair<std::string, double>{"bass", -0.5}));
  EXPECT_EQ(parsePointer("--pointer", "1,2,3,4"), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(parseColor("--background", "picture.png"), std::nullopt);
  EXPECT_EQ(parseColor("--background", "#1020fF"), (std::array<unsigned char, 3>{16, 32, 255}));
}

TEST(Arguments, WrongOnesAreRefusedByName) {
  using Parse = std::function<void(const std::string&)>;
  const std::pair<Parse, std::vector<std::string>> table[] = {
      {[](const auto& text) { parsePixelSize("--x", text); },
       {"", "x", "1920x", "x32", "1920x32x1", "0x32", "-5x32", "1920x16385", "19.5x32", "1e400x1", "1920 x32"}},
      {[](const auto& text) { parseExtent("--x", text); }, {"", "200", "0x3", "200x-1", "1e9x1", "infx1", "1x2x3"}},
      {[](const auto& text) { parseNumber("--x", text, 0, 10); },
       {"", "ten", "-0.1", "10.1", "nan", "inf", "1 ", "0x5", "++1", "1e999"}},
      {[](const auto& text) { parseCount("--x", text, 0, 10); }, {"", "1.5", "11", "-1", "99999999999999999999"}},
      {[](const auto& text) { parseAssignment("--x", text); }, {"", "=", "=1", "name"}},
      {[](const auto& text) { parseChannel("--x", text); },
       {"bass", "bass=", "bass=loud", "=1", "bass=nan", "bass=1e400"}},
      {[](const auto& text) { parsePointer("--x", text); }, {"", "1", "1,2,3", "1,2,3,4,5", "1,", "a,b"}},
      {[](const auto& text) { parseColor("--x", text); }, {"#", "#12345", "#1234567", "#12345g", "#+12345"}},
      {[](const auto& text) { parseFramePattern("--x", text); },
       {"%", "a%s.png", "a%d%d.png", "a%05d%", "a%0", "a%n", "%123d", "%-5d"}},
  };
  for (const auto& [parse, texts] : table) {
    for (const auto& text : texts) {
      try {
        parse(text);
        ADD_FAILURE() << "'" << text << "' was accepted";
      } catch (const UsageError& error) {
        EXPECT_NE(std::string(error.what()).find("--x"), std::string::npos) << error.what();
      }
    }
  }
}

TEST(Arguments, FrameNumbersArePadded) {
  EXPECT_EQ(parseFramePattern("--output", "a-%05d.png").fileFor(42), "a-00042.png");
  EXPECT_EQ(parseFramePattern("--output", "still.png").fileFor(7), "still.png");
}

}  // namespace
}  // namespace veloria::tests
