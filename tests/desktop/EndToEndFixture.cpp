#include "EndToEndFixture.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "settings/SettingsCodec.h"

namespace veloria::desktop {

namespace {

const Pixel panelColour{0x20, 0x30, 0x40};

}  // namespace

void EndToEnd::startDesktop(const DesktopSession::Options& options) {
  if (const auto missing = DesktopSession::missing({"xrandr"}); !missing.empty()) GTEST_SKIP() << missing;
  desktop_ = std::make_unique<DesktopSession>(options);
  desktop_->startWindowManager("openbox");
  desktop_->startPanel(barHeight);
  desktop_->startCompositor();
  // A compositor that has just started shows black for a moment.
  ASSERT_TRUE(desktop_->waitUntil([&] { return desktop_->screenshot().at(options.width / 2, 4) == panelColour; }));
}

void EndToEnd::startVeloria(const std::function<void(NimbraConfig&)>& edit,
                            const std::map<std::string, std::string>& environment) {
  NimbraConfig config;
  edit(config);
  const auto folder = std::filesystem::path(desktop_->environment().at("XDG_CONFIG_HOME")) / "Veloria";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "NimbraConfig.v1.json") << encodeSettings(config).value();
  // The validation layer keeps memory of its own, so it stays away from the long runs that measure it.
  const bool soaks = std::getenv("VELORIA_SOAK_ROUNDS") != nullptr;
  auto all = environment;
  all["VELORIA_VALIDATION"] = soaks ? "0" : "1";
  veloria_ = desktop_->run({VELORIA_BINARY}, all);
  ASSERT_TRUE(desktop_->waitForWindow("Veloria", 30)) << veloria_->output();
}

bool EndToEnd::waitForLight(const Region& region, double share) {
  return desktop_->waitUntil([&] { return litShare(desktop_->screenshot(), region) > share; }, 30);
}

std::string EndToEnd::complaints() const {
  std::istringstream output(veloria_->output());
  std::string rest;
  for (std::string line; std::getline(output, line);) {
    if (line.find("shows no status icons") == std::string::npos) rest += line + '\n';
  }
  return rest;
}

std::size_t EndToEnd::bands() const {
  const auto windows = desktop_->windows();
  return static_cast<std::size_t>(std::count_if(windows.begin(), windows.end(),
                                                [](const auto& window) { return window.windowClass == "Veloria"; }));
}

double EndToEnd::residentMiB() const {
  std::ifstream statm("/proc/" + std::to_string(veloria_->pid()) + "/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * 4096 / (1 << 20);
}

tests::ProcessResult EndToEnd::runBeside(const std::string& program, const std::vector<std::string>& arguments) const {
  std::vector<std::string> environment;
  for (const auto& [name, value] : desktop_->environment()) environment.push_back(name + "=" + value);
  return tests::runProcess(program, arguments, {}, environment);
}

}  // namespace veloria::desktop
