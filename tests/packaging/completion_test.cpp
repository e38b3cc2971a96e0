// The completions of veloria offer what its --help tells, in the shells that they are for.

#include <gmock/gmock.h>

#include "CompletionShells.h"
#include "Process.h"
#include "VeloriaHelp.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

Texts presetNames() {
  Texts names;
  for (const auto& preset : LookPreset::all()) names.emplace_back(preset.name);
  return names;
}

class VeloriaCompletionTest : public testing::Test {
 protected:
  VeloriaCompletionTest() { folder.write("my.scene", "set rays 1\n"); }

  CompletedProgram completed() const {
    return {"veloria", std::string(VELORIA_PACKAGING) + "/completions", folder.path(), {}};
  }
  Texts bash(const Texts& words) const { return bashOffers(completed(), words); }
  Texts fish(const std::string& line) const { return fishOffers(completed(), line); }

  TemporaryFolder folder;
};

TEST_F(VeloriaCompletionTest, Bash) {
  Texts all = veloriaCommands();
  for (const auto& command : all) {
    EXPECT_THAT(bash({command, "--"}), UnorderedElementsAreArray(veloriaOptions(command))) << command;
  }
  all.insert(all.end(), {"--help", "--version"});
  EXPECT_THAT(bash({""}), UnorderedElementsAreArray(all));
  EXPECT_THAT(bash({"render", "--preset", ""}), UnorderedElementsAreArray(presetNames()));
  EXPECT_THAT(bash({"bench", "--preset", "Northern\\ L"}), ElementsAre("Northern Lights"));
  EXPECT_THAT(bash({"render", "--size", ""}), IsEmpty());
  EXPECT_THAT(bash({"render", "--script", "my"}), ElementsAre("my.scene"));
  EXPECT_THAT(bash({"check", ""}), ElementsAre("my.scene"));
  EXPECT_THAT(bash({"status", ""}), IsEmpty());
}

TEST_F(VeloriaCompletionTest, Fish) {
  EXPECT_THAT(fish("veloria "), UnorderedElementsAreArray(veloriaCommands()));
  for (const auto& command : veloriaCommands()) {
    EXPECT_THAT(fish("veloria " + command + " --"), UnorderedElementsAreArray(veloriaOptions(command))) << command;
  }
  EXPECT_THAT(fish("veloria render --preset "), UnorderedElementsAreArray(presetNames()));
  EXPECT_THAT(fish("veloria render --script my"), ElementsAre("my.scene"));
  EXPECT_THAT(fish("veloria check my"), ElementsAre("my.scene"));
  EXPECT_THAT(fish("veloria status my"), IsEmpty());
}

TEST_F(VeloriaCompletionTest, Zsh) {
  ZshLine zsh(completed());
  EXPECT_TRUE(zsh.offers("veloria ", veloriaCommands()));
  for (const auto& command : {"render", "bench", "check"}) {
    EXPECT_TRUE(zsh.offers("veloria " + std::string(command) + " --", veloriaOptions(command)));
  }
  EXPECT_TRUE(zsh.offers("veloria status --j", {"son"}));
  EXPECT_TRUE(zsh.offers("veloria devices --h", {"elp"}));
  EXPECT_TRUE(zsh.offers("veloria render --preset ", {"Northern", "Rave"}));
  EXPECT_TRUE(zsh.offers("veloria check " + folder.path() + "/m", {"y.scene"}));
}

}  // namespace
}  // namespace veloria::tests
