#pragma once

#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "base/OwnedDescriptor.h"
#include "base/Result.h"
#include "ports/EventLoop.h"

namespace veloria {

/// Answers this user's programs on a local socket: one line in, one line out, then the connection is closed. The
/// protocol and its limits are those of base/LocalSocket.h. Main thread; nothing here waits.
///
/// Only the user may connect: the socket's permissions and a check of the peer see to that. A peer that sends too much,
/// sends no line in two seconds or does not read the answer is cut off. At most sixteen connections are open; one more
/// replaces the oldest, so that idle ones can't shut others out.
class LocalServer {
 public:
  /// Calls the function whenever the descriptor can be read, until the returned object is released.
  using Watch = DescriptorWatcher;

  struct Ports {
    Watch watch;
    TimerFactory* timers = nullptr;
    /// The answer to a question, both without their line feed. Must not throw, and must not destroy the server.
    std::function<std::string(std::string_view question)> answer;
  };

  /// Listens at `path`, replacing any file there; its folder must exist. The error is a text for a person.
  static Result<std::unique_ptr<LocalServer>> listen(const std::filesystem::path& path, Ports ports);
  /// Removes the socket's file.
  ~LocalServer();
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

 private:
  struct Connection {
    OwnedDescriptor socket;
    std::string received;
    double deadline = 0;
    std::shared_ptr<void> watch;
  };
  using Connections = std::list<Connection>;

  LocalServer(std::filesystem::path path, OwnedDescriptor socket, Ports ports);
  void watchForConnections();
  void acceptAll();
  void add(OwnedDescriptor socket);
  void receive(Connections::iterator connection);
  void respond(Connections::iterator connection);
  void close(Connections::iterator connection);
  void closeOverdue();

  std::filesystem::path path_;
  OwnedDescriptor socket_;
  Ports ports_;
  Connections connections_;  // the oldest first
  std::shared_ptr<void> watch_;
  std::unique_ptr<Timer> deadlines_;
  OneShot pause_;
};

}  // namespace veloria
