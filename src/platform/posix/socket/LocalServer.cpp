#include "platform/posix/socket/LocalServer.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include "base/LocalSocket.h"
#include "base/MediaClock.h"
#include "base/SocketCalls.h"

namespace veloria {

namespace {

constexpr std::size_t maximumConnections = 16;
constexpr int backlog = 64;
constexpr double patienceSeconds = 2;
constexpr double pauseSeconds = 1;

Failure failureAt(const std::filesystem::path& path) {
  return Failure{path.string() + ": " + std::strerror(errno)};
}

}  // namespace

Result<std::unique_ptr<LocalServer>> LocalServer::listen(const std::filesystem::path& path, Ports ports) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.native().size() >= sizeof(address.sun_path)) return Failure{path.string() + ": the path is too long"};
  path.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
  OwnedDescriptor socket = makeLocalSocket();
  if (!socket) return failureAt(path);
  ::unlink(path.c_str());
  // The folder keeps others out already; the socket's own permissions do so again.
  const mode_t mask = ::umask(0177);
  const bool bound = ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  ::umask(mask);
  if (!bound || ::listen(socket.get(), backlog) != 0) return failureAt(path);
  return std::unique_ptr<LocalServer>(new LocalServer(path, std::move(socket), std::move(ports)));
}

LocalServer::LocalServer(std::filesystem::path path, OwnedDescriptor socket, Ports ports)
    : path_(std::move(path)), socket_(std::move(socket)), ports_(std::move(ports)) {
  watchForConnections();
}

LocalServer::~LocalServer() {
  ::unlink(path_.c_str());
}

void LocalServer::watchForConnections() {
  watch_ = ports_.watch(socket_.get(), [this] { acceptAll(); });
}

void LocalServer::acceptAll() {
  for (;;) {
    OwnedDescriptor socket = acceptConnection(socket_.get());
    if (socket) {
      if (peerIsThisUser(socket.get())) add(std::move(socket));
      continue;
    }
    if (errno == EINTR || errno == ECONNABORTED) continue;
    if (errno == EAGAIN) return;
    // Out of descriptors: the waiting connection would wake the watch again and again.
    watch_.reset();
    pause_ = ports_.timers->after(
        pauseSeconds, [this] { watchForConnections(); }, pauseSeconds);
    return;
  }
}

void LocalServer::add(OwnedDescriptor socket) {
  if (connections_.size() >= maximumConnections) close(connections_.begin());
  const int number = socket.get();
  connections_.push_back({std::move(socket), {}, mediaTime() + patienceSeconds, nullptr});
  const auto connection = std::prev(connections_.end());
  connection->watch = ports_.watch(number, [this, connection] { receive(connection); });
  if (deadlines_ == nullptr) {
    deadlines_ = ports_.timers->repeating(pauseSeconds, pauseSeconds, [this] { closeOverdue(); });
  }
}

void LocalServer::receive(Connections::iterator connection) {
  std::array<char, 4096> block{};
  const ssize_t got = ::recv(connection->socket.get(), block.data(), block.size(), 0);
  if (got < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (got <= 0) return close(connection);
  connection->received.append(block.data(), static_cast<std::size_t>(got));
  const std::size_t end = connection->received.find('\n');
  if (std::min(end, connection->received.size()) > maximumQuestionBytes) return close(connection);
  if (end == std::string::npos) return;
  connection->received.resize(end);
  respond(connection);
}

void LocalServer::respond(Connections::iterator connection) {
  const std::string answer = ports_.answer(connection->received) + "\n";
  const int room = static_cast<int>(answer.size()) * 2;
  ::setsockopt(connection->socket.get(), SOL_SOCKET, SO_SNDBUF, &room, sizeof(room));
  // If the answer does not fit into the socket's buffer it is cut off; the peer misses its line feed.
  [[maybe_unused]] const auto sent = sendQuietly(connection->socket.get(), answer);
  close(connection);
}

void LocalServer::close(Connections::iterator connection) {
  connection->watch.reset();
  connections_.erase(connection);
  if (connections_.empty()) deadlines_.reset();
}

void LocalServer::closeOverdue() {
  const double now = mediaTime();
  while (!connections_.empty() && connections_.front().deadline <= now) close(connections_.begin());
}

}  // namespace veloria
