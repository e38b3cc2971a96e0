#include "desktop/SoundServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace veloria::desktop {

namespace {

constexpr double startSeconds = 20;
constexpr double commandSeconds = 15;
constexpr int sampleRate = 48000;
// Otherwise an output that nobody has listened to yet renders two seconds at once, and takes its time to come back.
constexpr const char* prompt = "norewinds=1";

std::vector<std::string> serverCommand(const std::string& socket, const std::vector<std::string>& outputs) {
  std::vector<std::string> command{"pulseaudio",         "-n",
                                   "--daemonize=no",     "--exit-idle-time=-1",
                                   "--use-pid-file=no",  "--realtime=no",
                                   "--high-priority=no", "--log-target=stderr"};
  const auto load = [&](const std::string& module) { command.insert(command.end(), {"-L", module}); };
  load("module-native-protocol-unix auth-anonymous=1 socket=" + socket);
  for (const std::string& output : outputs) load(std::string("module-null-sink ") + prompt + " sink_name=" + output);
  return command;
}

int freePort() {
  const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  bind(descriptor, reinterpret_cast<const sockaddr*>(&address), size);
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
  close(descriptor);
  return ntohs(address.sin_port);
}

/// True when the other side of a connection closes it in time.
bool atEnd(int connection, double seconds) {
  std::array<char, 256> ignored;
  const double end = now() + seconds;
  while (now() < end) {
    pollfd waiting{connection, POLLIN, 0};
    if (::poll(&waiting, 1, 100) > 0 && read(connection, ignored.data(), ignored.size()) <= 0) return true;
  }
  return false;
}

std::string withoutLineFeed(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

std::string SoundServer::missing() {
  const std::string program = missingProgram({"pulseaudio", "pactl", "pacat"});
  return program.empty() ? "" : program + " is not installed (script/bootstrap installs it)";
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
  server_ = std::make_unique<ChildProcess>(serverCommand(socket, outputs), own, folder_.file("pulseaudio.log"));
  if (!poll(startSeconds, [&] { return !server_->running() || tryControl({"info"}); }) || !server_->running()) {
    throw std::runtime_error("pulseaudio did not start:\n" + server_->output());
  }
  if (!outputs.empty()) setDefaultSink(outputs.front());
}

void SoundServer::enter() const {
  for (const auto& [name, value] : environment_) {
    value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
  }
}

std::unique_ptr<ChildProcess> SoundServer::playSine(double hertz, const std::string& output, double amplitude,
                                                    double seconds) {
  std::vector<std::string> command{"pacat",        "--playback",       "--raw", "--format=float32le", "--rate=48000",
                                   "--channels=1", "--latency-msec=50"};
  if (!output.empty()) command.push_back("--device=" + output);
  command.push_back(sineFile(hertz, amplitude, seconds));
  return std::make_unique<ChildProcess>(command, environment_, nextFile("player"));
}

void SoundServer::setDefaultSink(const std::string& name) {
  control({"set-default-sink", name});
}

std::string SoundServer::addModule(const std::string& name, const std::vector<std::string>& arguments) {
  std::vector<std::string> command{"load-module", name};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return withoutLineFeed(control(command));
}

std::string SoundServer::addSink(const std::string& name) {
  return addModule("module-null-sink", {prompt, "sink_name=" + name});
}

void SoundServer::removeModule(const std::string& number) {
  control({"unload-module", number});
}

std::string SoundServer::control(const std::vector<std::string>& arguments) {
  std::string output;
  if (!tryControl(arguments, &output)) throw std::runtime_error("pactl " + arguments.at(0) + ": " + output);
  return output;
}

bool SoundServer::tryControl(const std::vector<std::string>& arguments, std::string* output) {
  std::vector<std::string> command{"pactl"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  ChildProcess program(command, environment_, nextFile("pactl"));
  const bool done = program.wait(commandSeconds) == 0;
  if (output != nullptr) *output = program.output();
  return done;
}

std::string SoundServer::addClosedAddress() {
  const std::string cookie = "auth-cookie=" + folder_.write("other-cookie", std::string(256, 'o'));
  for (int attempt = 0; attempt < 10; ++attempt) {
    const std::string port = std::to_string(freePort());
    // Another program may have taken the port in between.
    if (tryControl({"load-module", "module-native-protocol-tcp", "listen=127.0.0.1", "port=" + port, cookie})) {
      return "tcp:127.0.0.1:" + port;
    }
  }
  throw std::runtime_error("pulseaudio can't listen on any port.");
}

void SoundServer::command(const std::string& line) {
  const std::string path = folder_.file("command");
  const std::string module = addModule("module-cli-protocol-unix", {"socket=" + path});
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const std::string text = line + "\n";
  const bool sent = connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                    write(connection, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  shutdown(connection, SHUT_WR);
  const bool done = sent && atEnd(connection, commandSeconds);
  close(connection);
  removeModule(module);
  if (!done) throw std::runtime_error("pulseaudio takes no commands:\n" + server_->output());
}

void SoundServer::kill() {
  server_->signal(SIGKILL);
  server_->wait(commandSeconds);
}

std::string SoundServer::nextFile(const std::string& kind) {
  return folder_.file(kind + "-" + std::to_string(++files_));
}

std::string SoundServer::sineFile(double hertz, double amplitude, double seconds) {
  std::vector<float> samples(static_cast<std::size_t>(seconds * sampleRate));
  for (std::size_t n = 0; n < samples.size(); ++n) {
    const double turns = hertz * static_cast<double>(n) / sampleRate;
    samples[n] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * turns));
  }
  const std::string path = nextFile("sine");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(samples.data()),
             static_cast<std::streamsize>(samples.size() * sizeof(float)));
  return path;
}

}  // namespace veloria::desktop
