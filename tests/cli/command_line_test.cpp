#include "cli/Commands.h"

#include <gmock/gmock.h>

#include <csignal>

#include "base/ExitCode.h"
#include "cli/ChildProgram.h"
#include "cli/Operands.h"

namespace veloria::cli::tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

CommandLine parse(const char* command, const Texts& arguments) {
  return parseCommandLine(*findCommand(command), arguments);
}

TEST(CommandLine, OptionsStandAnywhereBesideOperands) {
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
  EXPECT_THAT(parse("set", {"--", "--ttl", "1"}).operands, ElementsAre("--ttl", "1"));
  EXPECT_THAT(parse("set", {"-.5", "-7e-1"}).operands, ElementsAre("-.5", "-7e-1"));
}

TEST(CommandLine, AProgramKeepsItsOwnOptions) {
  const CommandLine plain = parse("run", {"-v", "--ttl", "5", "--", "make", "--help", "--", "-v"});
  EXPECT_THAT(plain.operands, ElementsAre("make", "--help", "--", "-v"));
  EXPECT_EQ(plain.ttl, 5);
  EXPECT_FALSE(plain.help);
  EXPECT_THAT(parse("run", {"--session", "x", "make", "-v"}).operands, ElementsAre("make", "-v"));
}

TEST(CommandLine, ComplaintsSayWhatWouldBeRight) {
  const struct {
    const char* command;
    Texts arguments;
    const char* part;
  } cases[] = {{"set", {"a"}, "'nimbra set NAME NUMBER'"},
               {"set", {"a", "1", "2"}, "'2'"},
               {"busy", {"now"}, "'now'"},
               {"busy", {"--session="}, "1 to 64 bytes"},
               {"busy", {"--ttl", "0"}, "above 0"},
               {"busy", {"--ttl", "soon"}, "not a number"},
               {"busy", {"--json"}, "'--json'"},
               {"status", {"--session", "x"}, "'--session'"},
               {"clear", {"-x\x1b"}, "'-x?'"},
               {"preset", {}, "'nimbra preset NAME'"}};
  for (const auto& [command, arguments, part] : cases) {
    EXPECT_THAT(([&, name = command, words = arguments] { parse(name, words); }),
                testing::ThrowsMessage<UsageError>(HasSubstr(part)));
    Texts helped = arguments;
    helped.insert(helped.begin(), "--help");
    EXPECT_TRUE(parse(command, helped).help) << "help comes before complaints";
  }
}

TEST(Operands, Numbers) {
  for (const char* text : {"1,5", "inf", "+-1", "++1", "+"}) EXPECT_THROW(finiteNumber("x", text), UsageError) << text;
}

TEST(Operands, Names) {
  const std::string longest(64, 'x');
  for (const std::string& name : {"a0"s, "Größe"s, "two words"s, longest}) EXPECT_EQ(channelName(name), name);
  for (const auto& name : {""s, longest + "x", "a\nb"s, "a\x7f"s, "\xC2\x9b"s, "\xff"s, "\xC3"s, "a\0b"s}) {
    EXPECT_THROW(channelName(name), UsageError) << name;
    EXPECT_THROW(sessionName(name), UsageError) << name;
  }
  for (const char* name : {"palette", "alert_until", "alert_for", "alert_palette", "sessions", "expires"}) {
    EXPECT_THROW(channelName(name), UsageError) << name;
    EXPECT_EQ(sessionName(name), name);
  }
}

TEST(Operands, Colors) {
  EXPECT_THAT(paletteColors({"#FF0055", "00ddff"}), ElementsAre("#ff0055", "#00ddff"));
  for (const Texts& texts : {Texts{"#ff0055"}, Texts(5, "#ff0055"), Texts{"#ff0055", "red"}, Texts{"#ff0055", "#fff"},
                             Texts{"##ff005", "#ff0055"}, Texts{"#ff0055", "-12345"}, Texts{"#ff0055", "0x1234"}}) {
    EXPECT_THROW(paletteColors(texts), UsageError) << testing::PrintToString(texts);
  }
}

TEST(Signals, OnlyWhatTheProgramHasNotHadIsPassedOn) {
  constexpr pid_t child = 100;
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT}) {
    EXPECT_TRUE(isForwarded({number, true, 1}, child)) << number;
    EXPECT_FALSE(isForwarded({number, false, 0}, child)) << number << " from the terminal";
    EXPECT_FALSE(isForwarded({number, true, child}, child)) << number << " from the program itself";
  }
  for (const int number : {SIGCHLD, SIGPIPE}) EXPECT_FALSE(isForwarded({number, true, 1}, child));
}

}  // namespace
}  // namespace veloria::cli::tests
