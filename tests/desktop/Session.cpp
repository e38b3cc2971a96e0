#include "desktop/Session.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace veloria::tests {

namespace {

template <typename Each>
double mean(const Region& region, Each each) {
  double sum = 0;
  for (int y = region.y; y < region.y + region.height; ++y) {
    for (int x = region.x; x < region.x + region.width; ++x) sum += each(x, y);
  }
  return sum / (region.width * region.height);
}

}  // namespace

double share(const Screenshot& picture, const Region& region, const std::function<bool(const Pixel&)>& holds) {
  return mean(region, [&](int x, int y) { return holds(picture.at(x, y)) ? 1 : 0; });
}

double litShare(const Screenshot& picture, const Region& region) {
  return share(picture, region, [](const Pixel& p) {
    const auto [low, high] = std::minmax({p.red, p.green, p.blue});
    return high > 90 && high - low > 40;
  });
}

double difference(const Screenshot& a, const Screenshot& b, const Region& region) {
  return mean(region, [&](int x, int y) {
    const Pixel p = a.at(x, y);
    const Pixel q = b.at(x, y);
    return (std::abs(p.red - q.red) + std::abs(p.green - q.green) + std::abs(p.blue - q.blue)) / 3.0;
  });
}

std::string Session::missing(const std::vector<std::string>& programs) {
  const std::string program = missingProgram(programs);
  return program.empty() ? "" : program + " is not installed (script/bootstrap installs it)";
}

Session::Session() {
  for (const auto& [variable, name] : {std::pair{"HOME", "home"},
                                       {"XDG_CONFIG_HOME", "config"},
                                       {"XDG_DATA_HOME", "data"},
                                       {"XDG_CACHE_HOME", "cache"},
                                       {"XDG_RUNTIME_DIR", "runtime"}}) {
    std::filesystem::create_directory(folder() / name);
    std::filesystem::permissions(folder() / name, std::filesystem::perms::owner_all);
    environment_[variable] = folder() / name;
  }
  for (const char* others : {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "HYPRLAND_INSTANCE_SIGNATURE"}) {
    environment_[others] = "";
  }
}

std::unique_ptr<ChildProcess> Session::run(const std::vector<std::string>& argv,
                                           const std::map<std::string, std::string>& environment) {
  auto all = environment;
  all.insert(environment_.begin(), environment_.end());
  return std::make_unique<ChildProcess>(argv, all, folder() / ("program-" + std::to_string(++runs_) + ".log"));
}

ProcessResult Session::finish(const std::vector<std::string>& argv) const {
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment_) variables.push_back(name + "=" + value);
  return runProcess(argv.at(0), {argv.begin() + 1, argv.end()}, {}, variables);
}

std::string Session::runToEnd(const std::vector<std::string>& argv) const {
  auto result = finish(argv);
  if (result.exitCode != 0) throw std::runtime_error(argv[0] + " failed:\n" + result.output + result.errors);
  return std::move(result.output);
}

bool Session::waitUntil(const std::function<bool()>& condition, double seconds) const {
  return poll(seconds, [&] {
    if (idle_) idle_();
    return condition();
  });
}

void Session::require(const std::string& what, ChildProcess& process, const std::function<bool()>& condition) const {
  const bool done = waitUntil([&] { return !process.running() || condition(); }, 30) && process.running();
  if (!done) throw std::runtime_error(what + ". It wrote:\n" + process.output());
}

}  // namespace veloria::tests
