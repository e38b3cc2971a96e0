#include "platform/linux/hyprland/HyprlandPointer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/OwnedDescriptor.h"
#include "platform/linux/hyprland/CursorPosition.h"

namespace veloria {

namespace {

constexpr std::string_view request = "j/cursorpos";
constexpr std::size_t longestAnswer = 4096;

OwnedDescriptor connectTo(const std::filesystem::path& path) {
  const std::string& text = path.native();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (text.size() >= sizeof(address.sun_path)) return OwnedDescriptor();
  std::memcpy(address.sun_path, text.data(), text.size());
  OwnedDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    return OwnedDescriptor();
  }
  return socket;
}

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
  if (question_) takeAnswer();
  if (!question_) ask();
  return position_;
}

void HyprlandPointer::ask() {
  Question question{connectTo(requestSocket_), clock_(), {}};
  // A socket that has just been connected takes these few bytes at once.
  if (!question.socket || ::send(question.socket.get(), request.data(), request.size(), MSG_NOSIGNAL) !=
                              static_cast<ssize_t>(request.size())) {
    position_.reset();
    return;
  }
  question_ = std::make_unique<Question>(std::move(question));
}

void HyprlandPointer::takeAnswer() {
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

}  // namespace veloria
