// The completions, in the shells that they are for, and the manual pages say what the programs' --help says.

#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <sstream>

#include "Process.h"
#include "PtySession.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using testing::HasSubstr;
using Texts = std::vector<std::string>;
using Names = std::set<std::string>;

Names presetNames() {
  Names names;
  for (const auto& preset : LookPreset::all()) names.emplace(preset.name);
  return names;
}

/// Every match of the pattern's first group.
Names matches(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern, std::regex::ECMAScript | std::regex::multiline);
  Names found;
  for (std::sregex_iterator at(text.begin(), text.end(), regex), end; at != end; ++at) found.insert((*at)[1]);
  return found;
}

/// The parameter: "veloria" or "nimbra".
class Help : public testing::TestWithParam<std::string> {
 protected:
  Help() { folder.write("my.scene", "set rays 1\n"); }

  const std::string& name() const { return GetParam(); }
  static std::string file(const std::string& path) { return VELORIA_PACKAGING "/" + path; }

  std::string output(const std::string& program, const Texts& arguments) const {
    const ProcessResult result = runProcess(program, arguments, folder.path(), environment);
    EXPECT_EQ(result.errors, "");
    return result.output;
  }
  std::string help(const Texts& arguments) const {
    return output(name() == "veloria" ? VELORIA_BINARY : VELORIA_NIMBRA, arguments);
  }
  Names commands() const { return matches(help({"--help"}), "^ +" + name() + " ([a-z]+) "); }
  Names options(const std::string& command) const {
    return matches(help({command, "--help"}), "^  (?:-[a-z], )?(--[a-z-]+)");
  }

  /// What bash offers for the last of `words`, those after the program's name, as the program would get it.
  Names bash(const Texts& words) const {
    Texts arguments{"--norc", "-c",
                    "set -eu; source \"$0\"; COMP_WORDS=(" + name() + " \"$@\"); COMP_CWORD=$#; _" + name() +
                        "; for word in \"${COMPREPLY[@]}\"; do eval \"printf '%s\\n' $word\"; done",
                    file("completions/" + name() + ".bash")};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return matches(output("/bin/bash", arguments), "^([^\n]+)$");
  }
  /// What fish offers at the end of `line`.
  Names fish(const std::string& line) const {
    const std::string offers = output("/usr/bin/env", {"HOME=" + folder.path(), "fish", "--no-config", "-c",
                                                       "source $argv[1]; complete --do-complete=$argv[2]",
                                                       file("completions/" + name() + ".fish"), name() + " " + line});
    return matches(offers, "^([^\t\n]+)");
  }

  TemporaryFolder folder;
  Texts environment{"PATH=" + std::string(VELORIA_NIMBRA_FOLDER) + ":" + std::getenv("PATH")};
};

INSTANTIATE_TEST_SUITE_P(Of, Help, testing::Values("veloria", "nimbra"), [](const auto& of) { return of.param; });

TEST_P(Help, BashAndFishOfferCommandsAndTheirOptions) {
  const Names all = commands();
  ASSERT_GE(all.size(), 5U);
  for (const auto& command : all) {
    EXPECT_EQ(bash({command, "--"}), options(command)) << command;
    EXPECT_EQ(fish(command + " --"), options(command)) << command;
  }
  EXPECT_EQ(fish(""), all);
  Names words = all;
  words.insert({"--help", "--version"});
  EXPECT_EQ(bash({""}), words);
}

TEST_P(Help, OperandsAreOffered) {
  const std::vector<std::pair<std::string, Names>> files{{"render --preset ", presetNames()},
                                                         {"render --size ", {}},
                                                         {"render --script my", {"my.scene"}},
                                                         {"check my", {"my.scene"}},
                                                         {"panel c", {"clear"}}};
  const std::vector<std::pair<std::string, Names>> programs{{"preset ", presetNames()},
                                                            {"run --ttl 3 -- dirna", {"dirname"}},
                                                            {"run dirna", {"dirname"}},
                                                            {"palette c", {"clear"}}};
  for (const auto& [line, offers] : name() == "veloria" ? files : programs) {
    Texts words;
    std::istringstream in(line);
    for (std::string word; in >> word;) words.push_back(word);
    if (line.back() == ' ') words.emplace_back();
    EXPECT_EQ(bash(words), offers) << line;
    EXPECT_TRUE(offers.empty() ? fish(line).empty() : fish(line).contains(*offers.begin())) << line;
  }
}

TEST_P(Help, ZshOffersTheSame) {
  PtySession zsh({"zsh", "-fi"}, environment);
  zsh.type("PS1='> '; fpath=(" + file("completions") +
           " $fpath); autoload -Uz compinit; compinit -u -D; echo re''ady\n");
  ASSERT_TRUE(zsh.waitFor("ready")) << zsh.screen();
  const auto expectOffers = [&](const std::string& line, const Names& texts) {
    zsh.forget();
    zsh.type(name() + " " + line + "\t");
    for (const auto& text : texts) EXPECT_TRUE(zsh.waitFor(text)) << text << " is missing in " << zsh.screen();
    zsh.type(std::string("\x15") + "echo em''pty\n");
    ASSERT_TRUE(zsh.waitFor("empty")) << zsh.screen();
  };
  expectOffers("", commands());
  if (name() == "veloria") {
    expectOffers("render --", options("render"));
    expectOffers("render --preset ", {"Northern", "Rave"});
    expectOffers("check " + folder.path() + "/m", {"y.scene"});
  } else {
    expectOffers("run --", {"--session", "--ttl", "--verbose"});
    for (const std::string run : {"run --ttl 3 -- dirna", "run dirna"}) expectOffers(run, {"me"});
    expectOffers("run nimbra status --j", {"son"});
    expectOffers("preset ", {"Northern", "Rave"});
  }
}

TEST_P(Help, TheManualPageTellsAll) {
  const std::string page = file("man/" + name() + ".1");
  // Below warnings is that other manuals are not installed.
  EXPECT_EQ(output("/usr/bin/env", {"mandoc", "-T", "lint", "-W", "warning", page}), "");
  const std::string text = output("/usr/bin/env", {"mandoc", "-T", "markdown", page});
  for (const auto& command : commands()) {
    EXPECT_THAT(text, HasSubstr("**" + command + "**"));
    for (const auto& option : options(command)) EXPECT_THAT(text, HasSubstr("**" + option + "**")) << command;
  }
  for (const auto& variable : matches(help({"--help"}), "^  (NIMBRA_[A-Z_]+) ")) EXPECT_THAT(text, HasSubstr(variable));
}

}  // namespace
}  // namespace veloria::tests
