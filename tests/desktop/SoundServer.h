#pragma once

#include <csignal>

#include "desktop/Session.h"

namespace veloria::tests {

/// A private PulseAudio server for tests, with outputs that lead nowhere. It never touches the one that runs already.
/// Whatever fails throws std::runtime_error with what the programs wrote.
class SoundServer {
 public:
  /// A sentence that names what is missing; empty if nothing is.
  static std::string missing();

  /// Waits until the server answers. Each of `outputs` is a null sink of that name; the first one is the default.
  explicit SoundServer(const std::vector<std::string>& outputs = {"speakers"});
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;

  /// What a program needs to find this server. It changes PULSE_* only, so it can be laid over a desktop's.
  const std::map<std::string, std::string>& environment() const { return environment_; }
  /// Sets environment() in this process. Before any thread is started.
  void enter() const;

  /// Plays a loud sine on an output (empty: the default one), until what is returned is let go or a minute has passed.
  std::unique_ptr<ChildProcess> playSine(double hertz, const std::string& output = {});

  /// What plays on the old default moves along.
  void setDefaultSink(const std::string& name) { control({"set-default-sink", name}); }
  /// Loads a server module and returns its number, for removeModule().
  std::string addModule(const std::string& name, const std::vector<std::string>& arguments = {});
  std::string addSink(const std::string& name);
  void removeModule(const std::string& number) { control({"unload-module", number}); }
  /// Runs pactl and returns what it printed.
  std::string control(const std::vector<std::string>& arguments);
  /// The same if it may fail: whether it did what was asked.
  bool tryControl(const std::vector<std::string>& arguments, std::string* output = nullptr);

  /// Hands one line to the server's own command interpreter, which can do more than pactl.
  void command(const std::string& line);

  void suspendProcess() { server_->signal(SIGSTOP); }
  void resumeProcess() { server_->signal(SIGCONT); }
  /// Ends the server without notice.
  void kill();

 private:
  TemporaryFolder folder_;
  std::map<std::string, std::string> environment_;
  int files_ = 0;
  std::unique_ptr<ChildProcess> server_;
};

}  // namespace veloria::tests
