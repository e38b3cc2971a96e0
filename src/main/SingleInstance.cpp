#include "main/SingleInstance.h"

#include <cstdio>
#include <string>
#include <utility>

#include "base/LocalSocket.h"
#include "base/Log.h"
#include "main/RunningApplication.h"
#include "main/commands/Command.h"
#include "platform/qt/DescriptorWatch.h"

namespace veloria {

namespace {

void complain(const std::string& reason) {
  systemLog("veloria: 'veloria status' and 'nimbra' can't reach this one: " + reason);
}

}  // namespace

SingleInstance::SingleInstance(const Environment& environment) : socket_(controlSocketPath(environment)) {
  if (!socket_) {
    complain("XDG_RUNTIME_DIR is too long");
    return;
  }
  auto lock = InstanceLock::take(*socket_);
  if (!lock) {
    complain(lock.error());
    return;
  }
  otherRuns_ = !lock->has_value();
  lock_ = *std::move(lock);
}

int SingleInstance::greetTheOther() const {
  std::puts("Veloria is running already; here are its settings.");
  try {
    askRunningApplication(R"({"command": "settings"})");
  } catch (const WorkError& error) {
    std::fprintf(stderr, "veloria: its settings can't be shown: %s\n", error.what());
    return failed;
  }
  return done;
}

std::unique_ptr<LocalServer> SingleInstance::listen(TimerFactory& timers, RemoteControl& remote) const {
  if (!lock_) return nullptr;
  auto server = LocalServer::listen(
      *socket_,
      {.watch = watchDescriptor, .timers = &timers, .answer = [&](auto question) { return remote.answer(question); }});
  if (server) return *std::move(server);
  complain(server.error());
  return nullptr;
}

}  // namespace veloria
