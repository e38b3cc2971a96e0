#include "main/RunningApplication.h"

#include "base/Environment.h"
#include "base/LocalSocket.h"
#include "main/commands/Command.h"

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
  if (!answer.is_object()) throw WorkError("the running application's answer can't be understood");
  const auto error = answer.find("error");
  if (error != answer.end() && error->is_string()) throw WorkError(error->get<std::string>());
  return answer;
}

}  // namespace veloria
