#include "platform/linux/hyprland/HyprlandPointer.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/SocketCalls.h"
#include "base/StrictJson.h"

namespace veloria {

namespace {

constexpr std::string_view request = "j/cursorpos";
constexpr std::size_t longestAnswer = 4096;

}  // namespace

struct HyprlandPointer::Question {
  OwnedDescriptor socket;
  double asked = 0;
  std::string answer;
};

HyprlandPointer::HyprlandPointer(std::filesystem::path requestSocket, MediaClock clock)
    : requestSocket_(std::move(requestSocket)), clock_(std::move(clock)) {}

HyprlandPointer::~HyprlandPointer() = default;

std::optional<Point> HyprlandPointer::layoutPosition() {
  if (question_) readAnswer();
  if (!question_) ask();
  return position_;
}

void HyprlandPointer::ask() {
  Question question{makeLocalSocket(), clock_(), {}};
  const int socket = question.socket.get();
  // A socket that has just been connected takes these few bytes at once.
  if (!question.socket || !connectLocalSocket(socket, requestSocket_) ||
      sendQuietly(socket, request) != static_cast<ssize_t>(request.size())) {
    position_.reset();
    return;
  }
  question_ = std::make_unique<Question>(std::move(question));
}

void HyprlandPointer::readAnswer() {
  std::array<char, 512> block{};
  std::string& answer = question_->answer;
  for (;;) {
    const ssize_t got = ::recv(question_->socket.get(), block.data(), block.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    const bool waits = got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    if (waits && clock_() - question_->asked < patienceSeconds) return;
    if (got > 0) answer.append(block.data(), static_cast<std::size_t>(got));
    if (got > 0 && answer.size() <= longestAnswer) continue;
    const bool whole = got == 0;
    position_ = whole ? cursorPositionFromAnswer(answer) : std::nullopt;
    question_.reset();
    return;
  }
}

PointerSource hyprlandPointerSource(const std::filesystem::path& requestSocket, std::function<Point(Point)> toGlobal) {
  auto pointer = std::make_shared<HyprlandPointer>(requestSocket);
  return {.location = [pointer, toGlobal = std::move(toGlobal)]() -> std::optional<Point> {
            const auto position = pointer->layoutPosition();
            return position ? std::optional(toGlobal(*position)) : std::nullopt;
          },
          .reason = {}};
}

namespace {

constexpr double farthest = 1e6;

std::optional<double> coordinate(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number()) return std::nullopt;
  const double value = found->get<double>();
  if (!(std::abs(value) <= farthest)) return std::nullopt;
  return value;
}

}  // namespace

std::optional<Point> cursorPositionFromAnswer(std::string_view answer) {
  const auto json = parseStrictJson(answer);
  if (!json || !json->is_object()) return std::nullopt;
  const auto x = coordinate(*json, "x");
  const auto y = coordinate(*json, "y");
  if (!x || !y) return std::nullopt;
  return Point{*x, *y};
}

std::optional<std::filesystem::path> hyprlandRequestSocket(const Environment& environment) {
  const std::string signature = environment("HYPRLAND_INSTANCE_SIGNATURE").value_or("");
  if (signature.empty() || signature == "." || signature == ".." || signature.find('/') != std::string::npos) {
    return std::nullopt;
  }
  const std::filesystem::path runtime = environment("XDG_RUNTIME_DIR").value_or("");
  const std::filesystem::path rest = std::filesystem::path("hypr") / signature / ".socket.sock";
  std::error_code ignored;
  if (runtime.is_absolute() && std::filesystem::exists(runtime / rest, ignored)) return runtime / rest;
  const std::filesystem::path older = std::filesystem::path("/tmp") / rest;
  if (std::filesystem::exists(older, ignored)) return older;
  return std::nullopt;
}

}  // namespace veloria
