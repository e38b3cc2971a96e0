#include "CompletionShells.h"

#include <gmock/gmock.h>

#include <sstream>

#include "Process.h"

namespace veloria::tests {

namespace {

Texts offersIn(const ProcessResult& result) {
  EXPECT_EQ(result.errors, "");
  Texts offers;
  std::istringstream stream(result.output);
  for (std::string line; std::getline(stream, line);) offers.push_back(line.substr(0, line.find('\t')));
  return offers;
}

}  // namespace

Texts bashOffers(const CompletedProgram& program, const Texts& words) {
  Texts arguments{"--norc", "-c",
                  "set -eu; source \"$0\"; COMP_WORDS=(" + program.name + " \"$@\"); COMP_CWORD=$#; _" + program.name +
                      "; for word in \"${COMPREPLY[@]}\"; do eval \"printf '%s\\n' $word\"; done",
                  program.scripts + "/" + program.name + ".bash"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  return offersIn(runProcess("/bin/bash", arguments, program.folder, program.environment));
}

Texts fishOffers(const CompletedProgram& program, const std::string& line) {
  return offersIn(runProcess(
      "/usr/bin/env",
      {"HOME=" + program.folder, "fish", "--no-config", "-c", "source $argv[1]; complete --do-complete=$argv[2]",
       program.scripts + "/" + program.name + ".fish", line},
      program.folder, program.environment));
}

ZshLine::ZshLine(const CompletedProgram& program) : terminal_({"zsh", "-fi"}, program.environment) {
  terminal_.type("PS1='> '; fpath=(" + program.scripts +
                 " $fpath); autoload -Uz compinit; compinit -u -D; echo re''ady\n");
  EXPECT_TRUE(terminal_.waitFor("ready")) << terminal_.screen();
}

testing::AssertionResult ZshLine::offers(const std::string& line, const Texts& texts) {
  terminal_.forget();
  terminal_.type(line + "\t");
  for (const auto& text : texts) {
    if (!terminal_.waitFor(text)) return testing::AssertionFailure() << text << " is missing in " << terminal_.screen();
  }
  terminal_.type(
      "\x15"
      "echo em''pty\n");
  if (!terminal_.waitFor("empty")) return testing::AssertionFailure() << "no prompt: " << terminal_.screen();
  return testing::AssertionSuccess();
}

}  // namespace veloria::tests
