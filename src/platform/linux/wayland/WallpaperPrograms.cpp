#include "platform/linux/wayland/WallpaperPrograms.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

namespace veloria {

namespace {

constexpr double lookSeconds = 1;
constexpr double toleranceSeconds = 0.25;
constexpr double soonShown = 0.3;
constexpr int looksAfterStart = 2;

std::set<long> processes() {
  std::set<long> numbers;
  std::error_code error;
  for (std::filesystem::directory_iterator it("/proc", error), end; !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename();
    long number = 0;
    const auto [last, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (failure == std::errc() && last == name.data() + name.size()) numbers.insert(number);
  }
  return numbers;
}

std::string programName(long process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace

bool isWallpaperProgram(std::string_view name) {
  // The kernel keeps fifteen letters of a name.
  constexpr std::array<std::string_view, 7> known{"swaybg",  "hyprpaper", "swww-daemon", "awww-daemon",
                                                  "wpaperd", "mpvpaper",  "wbg"};
  return std::find(known.begin(), known.end(), name) != known.end();
}

std::shared_ptr<void> WallpaperPrograms::onStart(std::function<void(double)> handler) {
  auto subscriber = std::make_shared<std::function<void(double)>>(std::move(handler));
  subscribers_.push_back(subscriber);
  if (!timer_) {
    newOneRuns();
    timer_ = timers_.repeating(lookSeconds, toleranceSeconds, [this] { look(); });
  }
  return subscriber;
}

void WallpaperPrograms::look() {
  std::erase_if(subscribers_, [](const auto& entry) { return entry.expired(); });
  if (subscribers_.empty()) return timer_.reset();
  if (newOneRuns()) repeats_ = looksAfterStart;
  if (repeats_ == 0) return;
  --repeats_;
  const auto current = subscribers_;
  for (const auto& entry : current) {
    if (const auto subscriber = entry.lock()) (*subscriber)(soonShown);
  }
}

bool WallpaperPrograms::newOneRuns() {
  auto now = processes();
  bool started = false;
  for (const long process : now) {
    if (older_.contains(process) || !isWallpaperProgram(programName(process))) continue;
    started = wallpapers_.insert(process).second || started;
  }
  std::erase_if(wallpapers_, [&](long process) { return !now.contains(process); });
  older_ = std::exchange(recent_, std::move(now));
  return started;
}

}  // namespace veloria
