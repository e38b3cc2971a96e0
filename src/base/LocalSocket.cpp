#include "base/LocalSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "base/LocalStream.h"
#include "base/MediaClock.h"
#include "base/SocketCalls.h"

namespace veloria {

namespace {

constexpr std::size_t blockBytes = 4096;
constexpr const char* late = "does not answer in time";
constexpr const char* tooLong = "gave too long an answer";
constexpr const char* gone = "closed the connection without a whole answer";

Failure systemFailure() {
  return {std::strerror(errno)};
}

/// A listener that is busy refuses for a moment, so this tries until `end`.
bool connectTo(int socket, const std::filesystem::path& path, double end) {
  while (!connectLocalSocket(socket, path)) {
    if (errno != EAGAIN && errno != EINTR) return false;
    if (mediaTime() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return peerIsThisUser(socket);
}

}  // namespace

Result<LocalStream> LocalStream::connect(const std::filesystem::path& path, double end) {
  OwnedDescriptor socket = makeLocalSocket();
  if (!socket || !connectLocalSocket(socket.get(), path)) return systemFailure();
  return LocalStream(std::move(socket), end);
}

bool LocalStream::waitFor(short events) const {
  for (;;) {
    const double left = end_ - mediaTime();
    if (left <= 0) return false;
    pollfd entry{socket_.get(), events, 0};
    const int ready = ::poll(&entry, 1, static_cast<int>(left * 1000) + 1);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

Result<Done> LocalStream::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = sendQuietly(socket_.get(), bytes);
    if (sent > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    } else if (errno == EAGAIN) {
      if (!waitFor(POLLOUT)) return Failure{late};
    } else if (errno != EINTR) {
      return systemFailure();
    }
  }
  return Done{};
}

// Empty at the end of the stream.
Result<std::string> LocalStream::receivePart(std::size_t most) {
  std::string part(std::min(most, blockBytes), '\0');
  for (;;) {
    if (!waitFor(POLLIN)) return Failure{late};
    const ssize_t got = ::recv(socket_.get(), part.data(), part.size(), 0);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) continue;
    if (got < 0) return systemFailure();
    part.resize(static_cast<std::size_t>(got));
    return part;
  }
}

Result<std::string> LocalStream::receive(std::size_t count) {
  std::string bytes;
  while (bytes.size() < count) {
    const auto part = receivePart(count - bytes.size());
    if (!part) return Failure{part.error()};
    if (part->empty()) return Failure{gone};
    bytes += *part;
  }
  return bytes;
}

Result<std::string> LocalStream::receiveAll(std::size_t most) {
  std::string bytes;
  for (;;) {
    const auto part = receivePart(blockBytes);
    if (!part) return Failure{part.error()};
    if (part->empty()) return bytes;
    bytes += *part;
    if (bytes.size() > most) return Failure{tooLong};
  }
}

Result<std::string> LocalStream::receiveLine(std::size_t most) {
  std::string line;
  while (line.size() <= most) {
    const auto part = receivePart(blockBytes);
    if (!part) return Failure{part.error()};
    if (part->empty()) return Failure{gone};
    const std::size_t end = part->find('\n');
    line += part->substr(0, end);
    if (end != std::string::npos) return line;
  }
  return Failure{tooLong};
}

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
  OwnedDescriptor socket = makeLocalSocket();
  if (!socket) return Failure{std::string("no socket can be made: ") + std::strerror(errno)};
  if (!connectTo(socket.get(), path, end)) return SocketReply{};
  LocalStream stream(std::move(socket), end);
  if (!stream.send(std::string(question) + "\n")) return Failure{"the running application does not take questions"};
  auto answer = stream.receiveLine(maximumAnswerBytes);
  if (!answer) return Failure{"the running application " + answer.error()};
  return SocketReply{true, *std::move(answer)};
}

}  // namespace veloria
