#include "ProgramFixture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "settings/SettingsCodec.h"

namespace veloria::tests {

void ProgramTest::TearDown() {
  veloria_.reset();
  if (HasFailure()) session_.reset();
  if (!session_) return;
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
    std::filesystem::remove_all(std::filesystem::path(session_->environment().at(variable)) / "Veloria");
  }
}

std::filesystem::path ProgramTest::settingsFile() const {
  return std::filesystem::path(session_->environment().at("XDG_CONFIG_HOME")) / "Veloria/NimbraConfig.v1.json";
}

void ProgramTest::startVeloria(const std::function<void(NimbraConfig&)>& edit,
                               const std::map<std::string, std::string>& environment) {
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

std::string ProgramTest::endOfVeloria(int exitCode) {
  EXPECT_EQ(veloria_->wait(15), exitCode);
  return veloria_->output();
}

json ProgramTest::status() const {
  const auto result = session_->finish({VELORIA_BINARY, "status", "--json"});
  return result.exitCode == 0 ? json::parse(result.output) : json::object();
}

bool ProgramTest::waitForStatus(const std::function<bool(const json&)>& condition) const {
  json now;
  const bool done = session_->waitUntil([&] { return !(now = status()).empty() && condition(now); }, 30);
  if (!done) std::printf("The status is %s\nIt wrote: %s\n", now.dump(2).c_str(), veloria_->output().c_str());
  return done;
}

bool ProgramTest::waitUntilDrawing(bool drawing) const {
  return waitForStatus([&](const json& now) { return now["rendering"] == drawing; });
}

int ProgramTest::nimbra(const std::vector<std::string>& arguments) const {
  std::vector<std::string> argv{NIMBRA_BINARY};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return session_->finish(argv).exitCode;
}

bool ProgramTest::waitForLight(const Region& region, double least, const std::string& output) const {
  const bool lit = session_->waitUntil([&] { return litShare(session_->screenshot(output), region) > least; }, 40);
  if (!lit) std::printf("No light. It wrote: %s\n", veloria_->output().c_str());
  return lit;
}

bool ProgramTest::waitUntilDark(const Region& region) const {
  return session_->waitUntil([&] { return litShare(session_->screenshot(), region) == 0; }, 30);
}

bool ProgramTest::waitUntilItMoves(const Region& region) const {
  const Screenshot first = session_->screenshot();
  return session_->waitUntil([&] { return difference(first, session_->screenshot(), region) > 1; });
}

int ProgramTest::soakRounds() {
  const char* text = std::getenv("VELORIA_SOAK_ROUNDS");
  return text != nullptr ? std::max(6, std::atoi(text)) : 6;
}

void ProgramTest::soak(const std::function<void(int)>& round) {
  double early = 0;
  for (int i = 0; i < soakRounds(); ++i) {
    ASSERT_NO_FATAL_FAILURE(round(i)) << "round " << i << veloria_->output();
    if (i == 4) early = residentMiB(veloria_->pid());
  }
  const double late = residentMiB(veloria_->pid());
  EXPECT_LT(late, early * 1.05 + 8) << "MiB, from " << early;
  RecordProperty("earlyMiB", std::to_string(early));
  RecordProperty("residentMiB", std::to_string(late));
}

}  // namespace veloria::tests
