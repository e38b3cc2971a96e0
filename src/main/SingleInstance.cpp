#include "main/SingleInstance.h"

#include <cstdio>
#include <string>
#include <utility>

#include "base/Environment.h"
#include "base/LocalSocket.h"
#include "base/Log.h"
#include "main/commands/Command.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria {

namespace {

constexpr double patienceSeconds = 5;

}  // namespace

std::optional<nlohmann::ordered_json> askRunningApplication(const std::string& question) {
  const auto path = controlSocketPath(processEnvironment());
  if (!path) return std::nullopt;
  const auto reply = askLocalSocket(*path, question, patienceSeconds);
  if (!reply) throw WorkError(reply.error());
  if (!reply->connected) return std::nullopt;
  auto answer = nlohmann::ordered_json::parse(reply->answer, nullptr, false);
  if (!answer.is_object()) throw WorkError("the running application's answer makes no sense");
  const auto error = answer.find("error");
  if (error != answer.end() && error->is_string()) throw WorkError(error->get<std::string>());
  return answer;
}

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
  auto lock = InstanceLock::acquire(*socket_);
  if (!lock) {
    complain(lock.error());
    return;
  }
  otherRuns_ = !lock->has_value();
  lock_ = *std::move(lock);
}

int SingleInstance::greetTheOther() const {
  std::puts("Veloria is already running; opening its settings.");
  try {
    askRunningApplication(R"({"command": "settings"})");
  } catch (const WorkError& error) {
    std::fprintf(stderr, "veloria: can't open its settings: %s\n", error.what());
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
