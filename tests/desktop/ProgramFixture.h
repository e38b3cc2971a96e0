#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "desktop/Session.h"
#include "settings/NimbraConfig.h"

namespace veloria::tests {

using nlohmann::json;

/// The program itself on a desktop of any kind. A test gives the desktop to useDesktop() and starts the program on it.
/// The desktop lasts until the next useDesktop() or the end of the suite; what the program has stored does not.
class ProgramTest : public testing::Test {
 protected:
  static void TearDownTestSuite() { session_.reset(); }
  void TearDown() override;

  void useDesktop(std::unique_ptr<Session> session) { session_ = std::move(session); }
  static Session& session() { return *session_; }
  static bool hasDesktop() { return session_ != nullptr; }

  /// Starts the program with settings that differ from the defaults by `edit`.
  void startVeloria(const std::function<void(NimbraConfig&)>& edit,
                    const std::map<std::string, std::string>& environment = {});
  /// Waits for the program's end with this exit code and returns what it has written.
  std::string endOfVeloria(int exitCode);

  /// Empty if the program does not answer.
  json status() const;
  bool waitForStatus(const std::function<bool(const json&)>& condition) const;
  bool waitUntilDrawing(bool drawing) const;
  int nimbra(const std::vector<std::string>& arguments) const;
  std::filesystem::path settingsFile() const;

  bool waitForLight(const Region& region, double least = 0.1, const std::string& output = {}) const;
  bool waitUntilDark(const Region& region) const;
  bool waitUntilItMoves(const Region& region) const;

  /// How often a soak test unplugs a screen: VELORIA_SOAK_ROUNDS, else 6.
  static int soakRounds();
  /// Calls `round` so often and expects that the program's memory stays flat after the fifth. Reports the figures.
  void soak(const std::function<void(int)>& round);

  std::unique_ptr<ChildProcess> veloria_;

 private:
  inline static std::unique_ptr<Session> session_;
};

}  // namespace veloria::tests
