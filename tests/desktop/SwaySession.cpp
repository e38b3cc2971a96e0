#include "desktop/SwaySession.h"

#include <unistd.h>

#include <csignal>
#include <sstream>
#include <stdexcept>

namespace veloria::tests {

namespace {

constexpr unsigned nobody = 65534;

// Reads a portable pixmap of 8 bits a component.
Screenshot screenshotFromPixmap(const std::string& bytes) {
  std::istringstream stream(bytes);
  std::string kind;
  int depth = 0;
  Screenshot shot;
  stream >> kind >> shot.width >> shot.height >> depth;
  const auto start = static_cast<std::size_t>(stream.tellg()) + 1;
  const std::size_t count = static_cast<std::size_t>(shot.width) * static_cast<std::size_t>(shot.height);
  if (!stream || kind != "P6" || depth != 255 || bytes.size() < start + count * 3) {
    throw std::runtime_error("grim wrote no pixmap as expected.");
  }
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[start + i]); };
  for (std::size_t i = 0; i < count; ++i) shot.pixels.push_back({byte(3 * i), byte(3 * i + 1), byte(3 * i + 2)});
  return shot;
}

}  // namespace

std::string SwaySession::missing(std::vector<std::string> programs) {
  programs.insert(programs.end(), {"sway", "swaymsg", "swaybg", "swaybar", "grim"});
  if (geteuid() == 0) programs.emplace_back("setpriv");
  return Session::missing(programs);
}

SwaySession::SwaySession(const Options& options) {
  const std::filesystem::path own = folder() / "sway";
  const std::filesystem::path socket = own / "ipc";
  const bool nested = options.host != nullptr;
  std::filesystem::create_directory(own);
  environment_["SWAYSOCK"] = socket;
  environment_["WAYLAND_DISPLAY"] = own / "wayland-1";
  auto variables = environment_;
  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
    variables[variable] = own;
  }
  variables["WLR_BACKENDS"] = nested ? "wayland" : "headless";
  variables[nested ? "WLR_WL_OUTPUTS" : "WLR_HEADLESS_OUTPUTS"] = std::to_string(options.outputs);
  variables["WLR_RENDERER"] = "pixman";
  variables["WLR_LIBINPUT_NO_DEVICES"] = "1";
  variables["WAYLAND_DISPLAY"] = nested ? options.host->environment().at("WAYLAND_DISPLAY") : "";
  variables["DBUS_SESSION_BUS_ADDRESS"] = "";
  std::vector<std::string> argv{"sway", "-c", folder_.write("sway.conf", options.configuration)};
  if (geteuid() == 0) {
    using std::filesystem::perms;
    std::filesystem::permissions(folder(), perms::owner_all | perms::others_exec | perms::others_read);
    if (chown(own.c_str(), nobody, nobody) != 0) throw std::runtime_error("sway gets no folder.");
    // A change of user forgets that the end of the test is the end of its programs.
    const std::string user = std::to_string(nobody);
    argv.insert(argv.begin(), {"setpriv", "--clear-groups", "--pdeathsig", "KILL", "--reuid", user, "--regid", user});
  }
  sway_ = std::make_unique<ChildProcess>(argv, variables, folder() / "sway.log");
  require("sway did not start", *sway_, [&] {
    return std::filesystem::exists(socket) && std::filesystem::exists(environment_.at("WAYLAND_DISPLAY"));
  });
}

SwaySession::~SwaySession() {
  if (sway_) sway_->signal(SIGCONT);
}

std::string SwaySession::message(const std::vector<std::string>& words) const {
  std::vector<std::string> argv{"swaymsg"};
  argv.insert(argv.end(), words.begin(), words.end());
  return runToEnd(argv);
}

Screenshot SwaySession::screenshot(const std::string& output) const {
  return screenshotFromPixmap(runToEnd({"grim", "-t", "ppm", "-o", output.empty() ? "HEADLESS-1" : output, "-"}));
}

}  // namespace veloria::tests
