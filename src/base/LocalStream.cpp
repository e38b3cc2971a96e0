#include "base/LocalStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/MediaClock.h"
#include "base/SocketCalls.h"

namespace veloria {

namespace {

constexpr std::size_t blockBytes = 4096;
constexpr const char* late = "does not answer in time";
constexpr const char* wordy = "gave too long an answer";
constexpr const char* gone = "closed the connection without a whole answer";

Failure systemFailure() {
  return {std::strerror(errno)};
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
    if (bytes.size() > most) return Failure{wordy};
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
  return Failure{wordy};
}

}  // namespace veloria
