#include "desktop/SwaySession.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "Process.h"

namespace veloria::desktop {

namespace {

constexpr double startSeconds = 30;
constexpr unsigned nobody = 65534;

bool runsAsRoot() {
  return geteuid() == 0;
}

// Looks the program up on the PATH.
tests::ProcessResult runHere(const std::vector<std::string>& argv,
                             const std::map<std::string, std::string>& variables) {
  std::vector<std::string> list;
  for (const auto& [name, value] : variables) list.push_back(name + "=" + value);
  return tests::runProcess("/usr/bin/env", argv, {}, list);
}

}  // namespace

std::string SwaySession::missing(const std::vector<std::string>& more) {
  std::vector<std::string> programs{"sway", "swaymsg", "swaybg", "swaybar", "grim"};
  if (runsAsRoot()) programs.emplace_back("setpriv");
  programs.insert(programs.end(), more.begin(), more.end());
  const std::string program = missingProgram(programs);
  return program.empty() ? "" : program + " is not installed (script/bootstrap installs it)";
}

SwaySession::SwaySession(const Options& options) {
  makeFolder(options.configuration);
  start(options);
}

SwaySession::~SwaySession() {
  if (sway_) sway_->signal(SIGCONT);
  sway_.reset();
  if (std::getenv("VELORIA_KEEP_DESKTOP") != nullptr) return;
  poll(2, [this] {
    std::error_code error;
    std::filesystem::remove_all(folder_, error);
    return !error;
  });
}

void SwaySession::makeFolder(const std::string& configuration) {
  std::string pattern = (std::filesystem::temp_directory_path() / "veloria-sway-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("No temporary folder can be made.");
  folder_ = pattern;
  for (const char* name : {"home", "config", "data", "cache", "runtime", "sway"}) {
    std::filesystem::create_directory(folder_ / name);
    std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
  }
  std::ofstream(folder_ / "sway.conf") << configuration;
  if (!runsAsRoot()) return;
  std::filesystem::permissions(folder_, std::filesystem::perms::owner_all | std::filesystem::perms::others_exec |
                                            std::filesystem::perms::others_read);
  if (chown((folder_ / "sway").c_str(), nobody, nobody) != 0) throw std::runtime_error("sway gets no folder.");
}

void SwaySession::start(const Options& options) {
  const std::string folder = folder_ / "sway";
  const std::string socket = folder + "/ipc";
  const std::string outputs = std::to_string(options.outputs);
  const bool nested = options.host != nullptr;
  const std::map<std::string, std::string> variables{
      {"XDG_RUNTIME_DIR", folder},
      {"HOME", folder},
      {"XDG_CONFIG_HOME", folder},
      {"SWAYSOCK", socket},
      {"WLR_BACKENDS", nested ? "wayland" : "headless"},
      {nested ? "WLR_WL_OUTPUTS" : "WLR_HEADLESS_OUTPUTS", outputs},
      {"WLR_RENDERER", "pixman"},
      {"WLR_LIBINPUT_NO_DEVICES", "1"},
      {"WAYLAND_DISPLAY", nested ? options.host->environment().at("WAYLAND_DISPLAY") : ""},
      {"DISPLAY", ""},
      {"DBUS_SESSION_BUS_ADDRESS", ""},
      {"HYPRLAND_INSTANCE_SIGNATURE", ""}};
  std::vector<std::string> argv{"sway", "-c", folder_ / "sway.conf"};
  if (runsAsRoot()) {
    const std::string user = std::to_string(nobody);
    // A change of user forgets that the end of the test is the end of its programs.
    const std::vector<std::string> as{"setpriv", "--reuid",        user,          "--regid",
                                      user,      "--clear-groups", "--pdeathsig", "KILL"};
    argv.insert(argv.begin(), as.begin(), as.end());
  }
  sway_ = std::make_unique<ChildProcess>(argv, variables, folder_ / "sway.log");
  environment_ = {{"WAYLAND_DISPLAY", folder + "/wayland-1"},
                  {"SWAYSOCK", socket},
                  {"DISPLAY", ""},
                  {"HYPRLAND_INSTANCE_SIGNATURE", ""},
                  {"HOME", folder_ / "home"},
                  {"XDG_CONFIG_HOME", folder_ / "config"},
                  {"XDG_DATA_HOME", folder_ / "data"},
                  {"XDG_CACHE_HOME", folder_ / "cache"},
                  {"XDG_RUNTIME_DIR", folder_ / "runtime"}};
  const bool up = poll(startSeconds, [&] {
    return std::filesystem::exists(socket) && std::filesystem::exists(environment_.at("WAYLAND_DISPLAY"));
  });
  if (!up || !sway_->running()) throw std::runtime_error("sway did not start:\n" + sway_->output());
}

std::unique_ptr<ChildProcess> SwaySession::run(const std::vector<std::string>& argv,
                                               const std::map<std::string, std::string>& environment) {
  auto all = environment_;
  for (const auto& [name, value] : environment) all[name] = value;
  return std::make_unique<ChildProcess>(argv, all, folder_ / ("run-" + std::to_string(++runs_) + ".log"));
}

std::string SwaySession::message(const std::vector<std::string>& words) const {
  std::vector<std::string> argv{"swaymsg"};
  argv.insert(argv.end(), words.begin(), words.end());
  const auto result = runHere(argv, environment_);
  if (result.exitCode != 0) throw std::runtime_error("swaymsg " + words.at(0) + ": " + result.output + result.errors);
  return result.output;
}

Screenshot SwaySession::screenshot(const std::string& output) const {
  const auto result = runHere({"grim", "-t", "ppm", "-o", output, "-"}, environment_);
  if (result.exitCode != 0) throw std::runtime_error("grim: " + result.errors);
  return screenshotFromPixmap(result.output);
}

}  // namespace veloria::desktop
