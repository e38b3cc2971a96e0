#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "desktop/Session.h"
#include "settings/NimbraConfig.h"
#include "settings/SettingsCodec.h"

namespace veloria::tests {

using nlohmann::json;

inline void overThePanel(NimbraConfig& config) {
  config.layerMode = LayerMode::aboveMenuBar;
}

/// The program itself on a desktop of any kind. A test gives the desktop to useDesktop() and starts the program on it.
/// The desktop lasts until the next useDesktop() or the end of the suite; what the program has stored does not.
class ProgramTest : public testing::Test {
 protected:
  static void TearDownTestSuite() { session_.reset(); }
  void TearDown() override {
    veloria_.reset();
    if (HasFailure()) session_.reset();
    if (!session_) return;
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
      std::filesystem::remove_all(std::filesystem::path(session_->environment().at(variable)) / "Veloria");
    }
  }

  void useDesktop(std::unique_ptr<Session> session) { session_ = std::move(session); }
  static Session& session() { return *session_; }
  static bool hasDesktop() { return session_ != nullptr; }

  /// Starts the program with settings that differ from the defaults by `edit`.
  void startVeloria(const std::function<void(NimbraConfig&)>& edit,
                    const std::map<std::string, std::string>& environment = {}) {
    NimbraConfig config;
    edit(config);
    std::filesystem::create_directories(settingsFile().parent_path());
    std::ofstream(settingsFile()) << encodeSettings(config).value();
    // The validation layer keeps memory of its own, so it stays away from the long runs that measure it.
    const bool soaks = std::getenv("VELORIA_SOAK_ROUNDS") != nullptr;
    auto all = environment;
    all["VELORIA_VALIDATION"] = soaks ? "0" : "1";
    veloria_ = session_->run({VELORIA_BINARY}, all);
  }
  /// Waits for the program's end with this exit code and returns what it has written.
  std::string endOfVeloria(int exitCode) {
    EXPECT_EQ(veloria_->wait(15), exitCode);
    return veloria_->output();
  }

  /// Empty if the program does not answer.
  json status() const {
    const auto result = session_->finish({VELORIA_BINARY, "status", "--json"});
    return result.exitCode == 0 ? json::parse(result.output) : json::object();
  }
  bool waitForStatus(const std::function<bool(const json&)>& condition) const {
    json now;
    const bool done = session_->waitUntil([&] { return !(now = status()).empty() && condition(now); }, 30);
    if (!done) std::printf("The status is %s\nIt wrote: %s\n", now.dump(2).c_str(), veloria_->output().c_str());
    return done;
  }
  bool waitUntilDrawing(bool drawing) const {
    return waitForStatus([&](const json& now) { return now["rendering"] == drawing; });
  }
  int nimbra(const std::vector<std::string>& arguments) const {
    std::vector<std::string> argv{NIMBRA_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return session_->finish(argv).exitCode;
  }
  std::filesystem::path settingsFile() const {
    return std::filesystem::path(session_->environment().at("XDG_CONFIG_HOME")) / "Veloria/NimbraConfig.v1.json";
  }

  bool waitForLight(const Region& region, double least = 0.1, const std::string& output = {}) const {
    const bool lit = session_->waitUntil([&] { return litShare(session_->screenshot(output), region) > least; }, 40);
    if (!lit) std::printf("No light. It wrote: %s\n", veloria_->output().c_str());
    return lit;
  }
  bool waitUntilDark(const Region& region) const {
    return session_->waitUntil([&] { return litShare(session_->screenshot(), region) == 0; }, 30);
  }
  bool waitUntilItMoves(const Region& region) const {
    const Screenshot first = session_->screenshot();
    return session_->waitUntil([&] { return difference(first, session_->screenshot(), region) > 1; });
  }

  /// How often a soak test unplugs a screen: VELORIA_SOAK_ROUNDS, else 6.
  static int soakRounds() {
    const char* text = std::getenv("VELORIA_SOAK_ROUNDS");
    return text != nullptr ? std::max(6, std::atoi(text)) : 6;
  }
  /// Calls `round` so often and expects that the program's memory stays flat after the fifth. Reports the figures.
  void soak(const std::function<void(int)>& round) {
    const auto residentMiB = [this] {
      std::ifstream statm("/proc/" + std::to_string(veloria_->pid()) + "/statm");
      double total = 0;
      double resident = 0;
      statm >> total >> resident;
      return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
    };
    double early = 0;
    for (int i = 0; i < soakRounds(); ++i) {
      ASSERT_NO_FATAL_FAILURE(round(i)) << "round " << i << veloria_->output();
      if (i == 4) early = residentMiB();
    }
    const double late = residentMiB();
    EXPECT_LT(late, early * 1.05 + 8) << "MiB, from " << early;
    RecordProperty("earlyMiB", std::to_string(early));
    RecordProperty("residentMiB", std::to_string(late));
  }

  std::unique_ptr<ChildProcess> veloria_;

 private:
  inline static std::unique_ptr<Session> session_;
};

}  // namespace veloria::tests
