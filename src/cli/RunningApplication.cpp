#include "cli/RunningApplication.h"

#include <stdexcept>
#include <string>

#include "base/LocalSocket.h"
#include "base/PlainText.h"
#include "base/StrictJson.h"

namespace veloria::cli {

namespace {

constexpr double shortWait = 0.5;
constexpr double longWait = 5;

Result<SocketReply> ask(const Environment& environment, const nlohmann::json& question, double seconds) {
  const auto path = controlSocketPath(environment);
  if (!path) return SocketReply{};
  return askLocalSocket(*path, question.dump(), seconds);
}

}  // namespace

bool applicationRuns(const Environment& environment) {
  const auto reply = ask(environment, {{"command", "status"}}, shortWait);
  return !reply || reply->connected;  // an error means that somebody was there
}

void tellApplication(const Environment& environment, const nlohmann::json& question) {
  const auto reply = ask(environment, question, longWait);
  if (!reply) throw std::runtime_error(reply.error() + ".");
  if (!reply->connected) throw std::runtime_error("Veloria is not running; 'veloria' starts it.");
  const auto answer = parseStrictJson(reply->answer);
  if (!answer || !answer->is_object()) throw std::runtime_error("the running application's answer makes no sense.");
  const auto error = answer->find("error");
  if (error == answer->end()) return;
  throw std::runtime_error(error->is_string() ? printable(error->get<std::string>()) : "it did not work.");
}

}  // namespace veloria::cli
