#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "Process.h"

namespace veloria::tests {

inline constexpr double patience = 20;

/// Runs the built program with folders of its own.
class NimbraFixture : public testing::Test {
 protected:
  using Texts = std::vector<std::string>;

  // What a background job of a plain shell inherits would make the programs under test deaf.
  NimbraFixture() {
    for (const int number : {SIGINT, SIGQUIT, SIGHUP}) std::signal(number, SIG_DFL);
  }

  Texts environment() const {
    const std::string own = std::filesystem::path(program).parent_path();
    return {"XDG_DATA_HOME=" + dataHome, "XDG_RUNTIME_DIR=" + folder.path(), "PATH=" + own + ":" + std::getenv("PATH")};
  }

  ProcessResult nimbra(const Texts& arguments) const {
    return runProcess(program, arguments, folder.path(), environment());
  }
  /// A shell's command line in which "nimbra" is the program.
  ProcessResult shell(const std::string& script) const {
    return runProcess("/bin/sh", {"-c", script}, folder.path(), environment());
  }
  /// A program in a process group of its own, looked up on the PATH; once it has written `ready`.
  std::unique_ptr<ChildProcess> start(const Texts& argv, const std::string& ready = "") {
    auto process = std::make_unique<ChildProcess>(
        argv, std::map<std::string, std::string>{{"XDG_DATA_HOME", dataHome}, {"XDG_RUNTIME_DIR", folder.path()}},
        folder.file(std::to_string(++started)));
    EXPECT_TRUE(poll(patience, [&] { return process->output().find(ready) != std::string::npos; }));
    return process;
  }

  /// The state file's object; null when it is not one.
  nlohmann::json state() const {
    std::ifstream file(statePath);
    return nlohmann::json::parse(file, nullptr, false);
  }
  double channel(const std::string& name) const { return state().value(name, -1.0); }
  nlohmann::json session(const std::string& name) const { return state()["sessions"].value(name, nlohmann::json()); }

  const std::string program = VELORIA_NIMBRA;
  TemporaryFolder folder;
  std::string dataHome = folder.file("data");
  std::string statePath = dataHome + "/Veloria/state.json";
  int started = 0;
};

}  // namespace veloria::tests
