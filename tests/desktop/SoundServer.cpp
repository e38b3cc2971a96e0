#include "desktop/SoundServer.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <stdexcept>

namespace veloria::tests {

namespace {

constexpr int commandSeconds = 15;
// Otherwise an output that nobody has listened to yet renders two seconds at once, and takes its time to come back.
constexpr const char* prompt = "norewinds=1";

}  // namespace

std::string SoundServer::missing() {
  return Session::missing({"pulseaudio", "pactl", "pacat", "python3"});
}

SoundServer::SoundServer(const std::vector<std::string>& outputs) {
  const std::string socket = folder_.file("native");
  environment_ = {{"PULSE_SERVER", "unix:" + socket},
                  {"PULSE_COOKIE", folder_.write("cookie", std::string(256, 'c'))},
                  {"PULSE_CLIENTCONFIG", folder_.write("client.conf", "autospawn = no\n")},
                  {"PULSE_RUNTIME_PATH", folder_.path()},
                  {"PULSE_SINK", ""},
                  {"PULSE_SOURCE", ""}};
  auto own = environment_;
  own.merge(std::map<std::string, std::string>{{"HOME", folder_.path()},
                                               {"XDG_RUNTIME_DIR", folder_.path()},
                                               {"XDG_CONFIG_HOME", folder_.path()},
                                               {"DBUS_SESSION_BUS_ADDRESS", ""},
                                               {"DISPLAY", ""}});
  std::vector<std::string> argv{"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no"};
  argv.insert(argv.end(), {"--realtime=no", "--high-priority=no", "--log-target=stderr"});
  argv.insert(argv.end(), {"-L", "module-native-protocol-unix auth-anonymous=1 socket=" + socket});
  for (const std::string& output : outputs) {
    argv.insert(argv.end(), {"-L", std::string("module-null-sink ") + prompt + " sink_name=" + output});
  }
  server_ = std::make_unique<ChildProcess>(argv, own, folder_.file("pulseaudio.log"));
  if (!poll(20, [&] { return !server_->running() || tryControl({"info"}); }) || !server_->running()) {
    throw std::runtime_error("pulseaudio did not start:\n" + server_->output());
  }
  if (!outputs.empty()) setDefaultSink(outputs.front());
}

void SoundServer::enter() const {
  for (const auto& [name, value] : environment_) {
    value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
  }
}

std::unique_ptr<ChildProcess> SoundServer::playSine(double hertz, const std::string& output) {
  std::vector<float> samples(60 * 48000);
  for (std::size_t n = 0; n < samples.size(); ++n) {
    samples[n] = static_cast<float>(0.8 * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(n) / 48000));
  }
  const std::string sine =
      folder_.write("sine-" + std::to_string(++files_),
                    std::string(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float)));
  std::vector<std::string> argv{"pacat", "--playback", "--raw", "--format=float32le", "--rate=48000", "--channels=1"};
  argv.insert(argv.end(), {"--latency-msec=50", sine});
  if (!output.empty()) argv.push_back("--device=" + output);
  return std::make_unique<ChildProcess>(argv, environment_, sine + ".log");
}

std::string SoundServer::addModule(const std::string& name, const std::vector<std::string>& arguments) {
  std::vector<std::string> command{"load-module", name};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const std::string number = control(command);
  return number.substr(0, number.find('\n'));
}

std::string SoundServer::addSink(const std::string& name) {
  return addModule("module-null-sink", {prompt, "sink_name=" + name});
}

std::string SoundServer::control(const std::vector<std::string>& arguments) {
  std::string output;
  if (!tryControl(arguments, &output)) throw std::runtime_error("pactl " + arguments.at(0) + ": " + output);
  return output;
}

bool SoundServer::tryControl(const std::vector<std::string>& arguments, std::string* output) {
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment_) variables.push_back(name + "=" + value);
  const auto result = runProcess("pactl", arguments, {}, variables, commandSeconds);
  if (output != nullptr) *output = result.output + result.errors;
  return result.exitCode == 0;
}

void SoundServer::command(const std::string& line) {
  const std::string path = folder_.file("command");
  const std::string module = addModule("module-cli-protocol-unix", {"socket=" + path});
  // The server closes the connection once the line was carried out.
  const std::string client =
      "import socket, sys\ns = socket.socket(socket.AF_UNIX)\ns.settimeout(15)\ns.connect(sys.argv[1])\n"
      "s.sendall(sys.argv[2].encode() + b'\\n')\ns.shutdown(1)\nwhile s.recv(256): pass";
  const auto result = runProcess("python3", {"-c", client, path, line});
  removeModule(module);
  if (result.exitCode != 0) throw std::runtime_error("pulseaudio takes no commands:\n" + result.errors);
}

void SoundServer::kill() {
  server_->signal(SIGKILL);
  server_->wait(commandSeconds);
}

}  // namespace veloria::tests
