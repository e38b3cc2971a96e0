#include "base/LocalSocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "base/LocalStream.h"
#include "base/MediaClock.h"
#include "base/OwnedDescriptor.h"
#include "base/SocketCalls.h"

namespace veloria {

namespace {

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
