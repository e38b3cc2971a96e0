#include "cli/CommandLine.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "base/ExitCode.h"
#include "cli/Operands.h"

namespace veloria::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

CommandLine parse(const char* command, const Texts& arguments) {
  return parseCommandLine(*findCommand(command), arguments);
}

std::string errorOf(const char* command, const Texts& arguments) {
  try {
    parse(command, arguments);
  } catch (const UsageError& error) {
    return error.what();
  }
  return {};
}

TEST(CommandLineTest, OptionsStandAnywhereBesideOperands) {
  for (const Texts& arguments :
       {Texts{"--session", "a b", "--ttl", "1.5", "-v", "x", "-2"},
        Texts{"x", "-2", "--verbose", "--ttl=1.5", "--session=a b"},
        Texts{"x", "--session", "first", "--session=a b", "--ttl", "+1.5", "-v", "--", "-2"}}) {
    const CommandLine line = parse("set", arguments);
    EXPECT_THAT(line.operands, ElementsAre("x", "-2"));
    EXPECT_EQ(line.session, "a b");
    EXPECT_EQ(line.ttl, 1.5);
    EXPECT_TRUE(line.verbose);
  }
}

TEST(CommandLineTest, WhatLooksLikeAnOptionCanBeAName) {
  EXPECT_THAT(parse("set", {"--", "--ttl", "1"}).operands, ElementsAre("--ttl", "1"));
  EXPECT_THAT(parse("unset", {"-"}).operands, ElementsAre("-"));
  EXPECT_THAT(parse("set", {"-.5", "-7e-1"}).operands, ElementsAre("-.5", "-7e-1"));
}

TEST(CommandLineTest, AProgramKeepsItsOwnOptions) {
  const CommandLine plain = parse("run", {"-v", "--ttl", "5", "--", "make", "--help", "--", "-v"});
  EXPECT_THAT(plain.operands, ElementsAre("make", "--help", "--", "-v"));
  EXPECT_EQ(plain.ttl, 5);
  EXPECT_FALSE(plain.help);
  EXPECT_THAT(parse("run", {"--session", "x", "make", "-v"}).operands, ElementsAre("make", "-v"));
  EXPECT_THAT(parse("run", {"--", "--odd-name"}).operands, ElementsAre("--odd-name"));
}

TEST(CommandLineTest, HelpComesBeforeComplaints) {
  for (const auto& command : commandDescriptions()) {
    EXPECT_TRUE(parseCommandLine(command, {"--help"}).help) << command.name;
    EXPECT_TRUE(parseCommandLine(command, {"-h", "--nonsense"}).help) << command.name;
  }
}

TEST(CommandLineTest, ComplaintsSayWhatWouldBeRight) {
  struct Case {
    const char* command;
    Texts arguments;
    const char* part;
  };
  for (const auto& [command, arguments, part] : std::vector<Case>{
           {"set", {"a"}, "'nimbra set NAME NUMBER'"},
           {"set", {"a", "1", "2"}, "'2' is one argument too many"},
           {"busy", {"now"}, "'now' is one argument too many"},
           {"busy", {"--session"}, "--session wants a value"},
           {"busy", {"--session="}, "1 to 64 bytes"},
           {"busy", {"--ttl", "0"}, "above 0"},
           {"busy", {"--ttl", "-3"}, "above 0"},
           {"busy", {"--ttl", "soon"}, "'soon' is not a number"},
           {"busy", {"--ttl", "inf"}, "is not a number"},
           {"busy", {"--json"}, "'--json' is none of its options"},
           {"status", {"--session", "x"}, "'--session' is none of its options"},
           {"clear", {"-x\x1b"}, "'-x?' is none of its options"},
           {"run", {"--ttl", "5"}, "'nimbra run -- COMMAND ...'"},
           {"run", {"--"}, "something is missing"},
           {"preset", {}, "'nimbra preset NAME'"},
       }) {
    const std::string error = errorOf(command, arguments);
    EXPECT_THAT(error, HasSubstr(part)) << command;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
}

TEST(OperandsTest, Numbers) {
  const std::vector<std::pair<const char*, double>> good{{"1", 1},        {"+1", 1},  {"-0.5", -0.5}, {".5", .5},
                                                         {"1e3", 1000.0}, {"007", 7}, {"5.", 5}};
  for (const auto& [text, value] : good) EXPECT_EQ(finiteNumber("x", text), value) << text;
  for (const char* text : {"", " 1", "1 ", "1,5", "0x10", "nan", "inf", "-inf", "1e999", "+-1", "++1", "+", "1.2.3"}) {
    EXPECT_THROW(finiteNumber("x", text), UsageError) << text;
  }
}

TEST(OperandsTest, Names) {
  const std::string longest(64, 'x');
  for (const std::string& name : {std::string("a0"), std::string("Größe"), std::string("two words"), longest}) {
    EXPECT_EQ(channelName(name), name);
  }
  for (const std::string& name : {std::string(), longest + "x", std::string("a\nb"), std::string("a\x7f"),
                                  std::string("\xC2\x9b"
                                              "2J"),
                                  std::string("\xff"), std::string("\xC3"), std::string("a\0b", 3)}) {
    EXPECT_THROW(channelName(name), UsageError) << testing::PrintToString(name);
    EXPECT_THROW(sessionName(name), UsageError) << testing::PrintToString(name);
  }
  for (const char* name : {"palette", "alert_until", "alert_for", "alert_palette", "sessions", "expires"}) {
    EXPECT_THROW(channelName(name), UsageError) << name;
    EXPECT_EQ(sessionName(name), name);
  }
}

TEST(OperandsTest, Colours) {
  EXPECT_THAT(paletteColours({"#FF0055", "00ddff"}), ElementsAre("#ff0055", "#00ddff"));
  EXPECT_THAT(paletteColours({"#ff0055", "#ffcc00", "#00ddff", "123456"}), testing::SizeIs(4));
  for (const Texts& texts :
       {Texts{}, Texts{"#ff0055"}, Texts(5, "#ff0055"), Texts{"#ff0055", "red"}, Texts{"#ff0055", "#fff"},
        Texts{"##ff005", "#ff0055"}, Texts{"#ff0055", "-12345"}, Texts{"#ff0055", "0x1234"}, Texts{"#ff0055", ""}}) {
    EXPECT_THROW(paletteColours(texts), UsageError) << testing::PrintToString(texts);
  }
}

}  // namespace
}  // namespace veloria::cli
