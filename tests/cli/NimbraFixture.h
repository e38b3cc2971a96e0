#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Process.h"

namespace veloria::tests {

/// Runs the built program with folders of its own.
class NimbraFixture : public testing::Test {
 protected:
  NimbraFixture();

  static const std::string& program();

  ProcessResult nimbra(const std::vector<std::string>& arguments) const;
  /// A shell's command line in which "nimbra" is the program.
  ProcessResult shell(const std::string& script) const;
  /// The program in a process group of its own.
  std::unique_ptr<desktop::ChildProcess> start(const std::vector<std::string>& arguments) const;

  /// The state file's object; null when it is not one.
  nlohmann::json state() const;
  /// A member that is a number; -1 when there is none.
  double channel(const std::string& name) const;
  /// What `nimbra status` says of it.
  double shownChannel(const std::string& name) const;
  /// Whether any session's name begins like this.
  bool hasSession(const std::string& prefix) const;

  std::vector<std::string> environment() const;

  TemporaryFolder folder;
  std::string dataHome = folder.file("data");
  std::string statePath = dataHome + "/Veloria/state.json";
};

}  // namespace veloria::tests
