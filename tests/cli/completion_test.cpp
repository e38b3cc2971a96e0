// The completions in the shells that they are for, and the manual page.

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "NimbraFixture.h"
#include "PtySession.h"
#include "cli/CommandDescription.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::UnorderedElementsAreArray;
using Texts = std::vector<std::string>;

const std::string packaging = VELORIA_PACKAGING;
const std::string completions = packaging + "/completions/";

Texts linesOf(const std::string& text) {
  Texts lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line.substr(0, line.find('\t')));
  return lines;
}

Texts commandNames() {
  Texts names;
  for (const auto& command : cli::commandDescriptions()) names.emplace_back(command.name);
  return names;
}

Texts presetNames() {
  Texts names;
  for (const auto& preset : LookPreset::all()) names.emplace_back(preset.name);
  return names;
}

class CompletionTest : public NimbraFixture {
 protected:
  /// What bash offers for the last of `words`.
  Texts bash(const Texts& words) const {
    Texts arguments{"--norc", "-c",
                    "set -eu; source \"$0\"; COMP_WORDS=(nimbra \"$@\"); COMP_CWORD=$#; _nimbra; "
                    "for word in \"${COMPREPLY[@]}\"; do eval \"printf '%s\\n' $word\"; done",
                    completions + "nimbra.bash"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const ProcessResult result = runProcess("/bin/bash", arguments, folder.path(), environment());
    EXPECT_EQ(result.errors, "");
    return linesOf(result.output);
  }

  Texts fish(const std::string& line) const {
    const ProcessResult result =
        runProcess("/usr/bin/env",
                   {"HOME=" + folder.path(), "fish", "--no-config", "-c",
                    "source $argv[1]; complete --do-complete=$argv[2]", completions + "nimbra.fish", line},
                   folder.path(), environment());
    EXPECT_EQ(result.errors, "");
    return linesOf(result.output);
  }
};

TEST_F(CompletionTest, Bash) {
  Texts all = commandNames();
  all.insert(all.end(), {"--help", "--version"});
  EXPECT_THAT(bash({""}), UnorderedElementsAreArray(all));
  EXPECT_THAT(bash({"r"}), ElementsAre("run", "resume"));
  EXPECT_THAT(bash({"run", "--"}), IsSupersetOf({"--session", "--ttl", "--verbose", "--help"}));
  EXPECT_THAT(bash({"run", "--session", ""}), IsEmpty());
  EXPECT_THAT(bash({"run", "--ttl", "3", "--", "dirna"}), Contains("dirname"));
  EXPECT_THAT(bash({"run", "dirna"}), Contains("dirname"));
  EXPECT_THAT(bash({"status", "-"}), ElementsAre("--json", "--help"));
  EXPECT_THAT(bash({"palette", ""}), ElementsAre("clear"));
  EXPECT_THAT(bash({"preset", ""}), UnorderedElementsAreArray(presetNames()));
  EXPECT_THAT(bash({"preset", "Northern\\ L"}), ElementsAre("Northern Lights"));
}

TEST_F(CompletionTest, Fish) {
  EXPECT_THAT(fish("nimbra "), UnorderedElementsAreArray(commandNames()));
  EXPECT_THAT(fish("nimbra re"), ElementsAre("resume"));
  EXPECT_THAT(fish("nimbra run --"), IsSupersetOf({"--session", "--ttl", "--verbose", "--help"}));
  EXPECT_THAT(fish("nimbra run --ttl 3 -- dirna"), Contains("dirname"));
  EXPECT_THAT(fish("nimbra run dirna"), Contains("dirname"));
  EXPECT_THAT(fish("nimbra run -- nimbra status --j"), ElementsAre("--json"));
  EXPECT_THAT(fish("nimbra status --j"), ElementsAre("--json"));
  EXPECT_THAT(fish("nimbra busy --j"), IsEmpty());
  EXPECT_THAT(fish("nimbra preset "), UnorderedElementsAreArray(presetNames()));
}

TEST_F(CompletionTest, Zsh) {
  PtySession terminal({"zsh", "-fi"}, environment());
  terminal.type("PS1='> '; fpath=(" + completions + " $fpath); autoload -Uz compinit; compinit -u -D; echo re''ady\n");
  ASSERT_TRUE(terminal.waitFor("ready")) << terminal.screen();
  const auto offers = [&](const std::string& line, const Texts& texts) {
    terminal.forget();
    terminal.type(line + "\t");
    for (const auto& text : texts) EXPECT_TRUE(terminal.waitFor(text)) << line << ": " << terminal.screen();
    terminal.type(
        "\x15"
        "echo em''pty\n");
    EXPECT_TRUE(terminal.waitFor("empty"));
  };
  Texts firstWords;
  for (const auto& name : presetNames()) firstWords.push_back(name.substr(0, name.find(' ')));
  offers("nimbra ", commandNames());
  offers("nimbra run --", {"--session", "--ttl", "--verbose"});
  offers("nimbra run --ttl 3 -- dirna", {"me"});
  offers("nimbra run dirna", {"me"});
  offers("nimbra run nimbra status --j", {"son"});
  offers("nimbra preset ", firstWords);
}

TEST_F(CompletionTest, ManualPage) {
  const std::string page = packaging + "/man/nimbra.1";
  const ProcessResult lint = runProcess("/usr/bin/env", {"mandoc", "-T", "lint", page});
  EXPECT_EQ(lint.exitCode, 0);
  EXPECT_EQ(lint.output + lint.errors, "");
  const std::string text = runProcess("/usr/bin/env", {"mandoc", "-T", "markdown", page}).output;
  for (const auto& name : commandNames()) EXPECT_THAT(text, HasSubstr("**" + name + "**"));
}

}  // namespace
}  // namespace veloria::tests
