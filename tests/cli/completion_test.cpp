// The completions in the shells that they are for, and the manual page.

#include <gmock/gmock.h>

#include "CompletionShells.h"
#include "NimbraFixture.h"
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

const std::string packaging = VELORIA_PACKAGING;

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
  CompletedProgram completed() const { return {"nimbra", packaging + "/completions", folder.path(), environment()}; }
  Texts bash(const Texts& words) const { return bashOffers(completed(), words); }
  Texts fish(const std::string& line) const { return fishOffers(completed(), line); }
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
  ZshLine zsh(completed());
  Texts firstWords;
  for (const auto& name : presetNames()) firstWords.push_back(name.substr(0, name.find(' ')));
  EXPECT_TRUE(zsh.offers("nimbra ", commandNames()));
  EXPECT_TRUE(zsh.offers("nimbra run --", {"--session", "--ttl", "--verbose"}));
  EXPECT_TRUE(zsh.offers("nimbra run --ttl 3 -- dirna", {"me"}));
  EXPECT_TRUE(zsh.offers("nimbra run dirna", {"me"}));
  EXPECT_TRUE(zsh.offers("nimbra run nimbra status --j", {"son"}));
  EXPECT_TRUE(zsh.offers("nimbra preset ", firstWords));
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
