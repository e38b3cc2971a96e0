#include "main/commands/Arguments.h"

#include <gtest/gtest.h>

#include <functional>

#include "main/commands/Command.h"

namespace veloria {
namespace {

TEST(Arguments, rightOnesAreRead) {
  EXPECT_EQ(parsePixelSize("--size", "1920x32"), (gpu::Size{1920, 32}));
  EXPECT_EQ(parsePixelSize("--size", "1x16384"), (gpu::Size{1, 16384}));
  EXPECT_EQ(parseExtent("--notch", "200.5x32"), (Extent{200.5, 32}));
  EXPECT_EQ(parseNumber("--fps", "+29.97", 1, 240), 29.97);
  EXPECT_EQ(parseCount("--frames", "300", 10, 1000), 300);
  EXPECT_EQ(parseAssignment("--set", "a=b=c"), (std::pair<std::string, std::string>{"a", "b=c"}));
  EXPECT_EQ(parseAssignment("--set", "a="), (std::pair<std::string, std::string>{"a", ""}));
  EXPECT_EQ(parseChannel("--channel", "Bass=-0.5"), (std::pair<std::string, double>{"bass", -0.5}));
  EXPECT_EQ(parsePointer("--pointer", "10,-2.5"), (std::vector<double>{10, -2.5}));
  EXPECT_EQ(parsePointer("--pointer", "1,2,3,4"), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(parseColor("--background", "picture.png"), std::nullopt);
  EXPECT_EQ(parseColor("--background", "#1020fF"), (std::array<unsigned char, 3>{16, 32, 255}));
}

TEST(Arguments, wrongOnesAreRefusedByName) {
  const std::function<void(const std::string&)> size = [](const auto& text) { parsePixelSize("--x", text); };
  const std::function<void(const std::string&)> extent = [](const auto& text) { parseExtent("--x", text); };
  const std::function<void(const std::string&)> number = [](const auto& text) { parseNumber("--x", text, 0, 10); };
  const std::function<void(const std::string&)> count = [](const auto& text) { parseCount("--x", text, 0, 10); };
  const std::function<void(const std::string&)> assignment = [](const auto& text) { parseAssignment("--x", text); };
  const std::function<void(const std::string&)> channel = [](const auto& text) { parseChannel("--x", text); };
  const std::function<void(const std::string&)> pointer = [](const auto& text) { parsePointer("--x", text); };
  const std::function<void(const std::string&)> color = [](const auto& text) { parseColor("--x", text); };
  const std::function<void(const std::string&)> pattern = [](const auto& text) { parseFramePattern("--x", text); };
  const std::pair<const std::function<void(const std::string&)>*, std::vector<std::string>> table[] = {
      {&size,
       {"", "x", "1920", "1920x", "x32", "1920x32x1", "0x32", "-5x32", "1920x16385", "19.5x32", "1e400x1", "axb",
        "1920 x32", "nanx1", "1920X32"}},
      {&extent, {"", "200", "0x3", "200x-1", "1e9x1", "infx1", "1x2x3"}},
      {&number, {"", "ten", "-0.1", "10.1", "nan", "inf", "1 ", "0x5", "++1", "1e999"}},
      {&count, {"", "1.5", "11", "-1", "99999999999999999999"}},
      {&assignment, {"", "=", "=1", "name"}},
      {&channel, {"bass", "bass=", "bass=loud", "=1", "bass=nan", "bass=1e400"}},
      {&pointer, {"", "1", "1,2,3", "1,2,3,4,5", "1,", "a,b"}},
      {&color, {"#", "#12345", "#1234567", "#12345g", "#+12345"}},
      {&pattern, {"%", "a%s.png", "a%d%d.png", "a%05d%", "a%0", "a%n", "%123d", "%-5d"}},
  };
  for (const auto& [parse, texts] : table) {
    for (const auto& text : texts) {
      try {
        (*parse)(text);
        ADD_FAILURE() << "'" << text << "' was accepted";
      } catch (const UsageError& error) {
        EXPECT_NE(std::string(error.what()).find("--x"), std::string::npos) << error.what();
      }
    }
  }
}

TEST(Arguments, frameNumbersArePadded) {
  EXPECT_EQ(parseFramePattern("--output", "a-%05d.png").fileFor(42), "a-00042.png");
  EXPECT_EQ(parseFramePattern("--output", "a-%03d.png").fileFor(123456), "a-123456.png");
  EXPECT_EQ(parseFramePattern("--output", "%d").fileFor(7), "7");
  EXPECT_EQ(parseFramePattern("--output", "still.png").fileFor(7), "still.png");
}

}  // namespace
}  // namespace veloria
