#include "base/LocalSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"
#include "base/SocketCalls.h"

namespace veloria {

namespace {

sockaddr_un addressOf(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& text = path.native();
  std::memcpy(address.sun_path, text.data(), std::min(text.size(), sizeof(address.sun_path) - 1));
  return address;
}

/// Waits until `events` or `end`; false at the end.
bool waitFor(int socket, short events, double end) {
  for (;;) {
    const double left = end - mediaTime();
    if (left <= 0) return false;
    pollfd entry{socket, events, 0};
    const int ready = ::poll(&entry, 1, static_cast<int>(left * 1000) + 1);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

/// A listener that is busy refuses for a moment, so this tries until `end`.
bool connectTo(int socket, const std::filesystem::path& path, double end) {
  const sockaddr_un address = addressOf(path);
  while (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    if (errno != EAGAIN && errno != EINTR) return false;
    if (mediaTime() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return peerIsThisUser(socket);
}

bool sendAll(int socket, std::string_view bytes, double end) {
  while (!bytes.empty()) {
    const ssize_t sent = sendQuietly(socket, bytes);
    if (sent > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN) {
      if (!waitFor(socket, POLLOUT, end)) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

Result<std::string> receiveLine(int socket, double end) {
  std::string line;
  std::array<char, 4096> block{};
  while (line.size() <= maximumAnswerBytes) {
    if (!waitFor(socket, POLLIN, end)) return Failure{"the running application does not answer"};
    const ssize_t got = ::recv(socket, block.data(), block.size(), 0);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (got <= 0) return Failure{"the running application closed the connection without an answer"};
    const std::string_view part(block.data(), static_cast<std::size_t>(got));
    const std::size_t lineEnd = part.find('\n');
    line += part.substr(0, lineEnd);
    if (lineEnd != std::string_view::npos) return line;
  }
  return Failure{"the running application's answer is too long"};
}

}  // namespace

bool peerIsThisUser(int socket) {
#ifdef SO_PEERCRED
  ucred peer{};
  socklen_t size = sizeof(peer);
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
#else
  uid_t user = 0;
  gid_t group = 0;
  return ::getpeereid(socket, &user, &group) == 0 && user == ::geteuid();
#endif
}

std::optional<std::filesystem::path> controlSocketPath(const Environment& environment) {
  const std::filesystem::path runtime = environment("XDG_RUNTIME_DIR").value_or("");
  const std::filesystem::path folder = runtime.is_absolute()
                                           ? runtime / "Veloria"
                                           : std::filesystem::path("/tmp/Veloria-" + std::to_string(::geteuid()));
  std::filesystem::path path = folder / "control";
  if (path.native().size() >= sizeof(sockaddr_un::sun_path)) return std::nullopt;
  return path;
}

Result<SocketReply> askLocalSocket(const std::filesystem::path& path, std::string_view question, double seconds) {
  const double end = mediaTime() + seconds;
  if (path.native().size() >= sizeof(sockaddr_un::sun_path)) return SocketReply{};
  const OwnedDescriptor socket = makeLocalSocket();
  if (!socket) return Failure{std::string("no socket can be made: ") + std::strerror(errno)};
  if (!connectTo(socket.get(), path, end)) return SocketReply{};
  if (!sendAll(socket.get(), std::string(question) + "\n", end)) {
    return Failure{"the running application does not take questions"};
  }
  auto answer = receiveLine(socket.get(), end);
  if (!answer) return Failure{answer.error()};
  return SocketReply{true, *std::move(answer)};
}

}  // namespace veloria
