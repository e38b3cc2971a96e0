#include "base/SocketCalls.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace veloria {

#if defined(__linux__) && !defined(VELORIA_PORTABLE_CALLS)

OwnedDescriptor makeLocalSocket() {
  return OwnedDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

OwnedDescriptor acceptConnection(int listener) {
  return OwnedDescriptor(::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

std::optional<Pipe> makePipe(bool waits) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | (waits ? 0 : O_NONBLOCK)) != 0) return std::nullopt;
  return Pipe{OwnedDescriptor(ends[0]), OwnedDescriptor(ends[1])};
}

#else

namespace {

void keepFromChildren(int descriptor) {
  ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

void neverWait(int descriptor) {
  ::fcntl(descriptor, F_SETFL, O_NONBLOCK);
}

OwnedDescriptor prepared(int socket) {
  if (socket < 0) return OwnedDescriptor();
  keepFromChildren(socket);
  neverWait(socket);
#ifdef SO_NOSIGPIPE
  const int on = 1;
  ::setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof(on));
#endif
  return OwnedDescriptor(socket);
}

}  // namespace

OwnedDescriptor makeLocalSocket() {
  return prepared(::socket(AF_UNIX, SOCK_STREAM, 0));
}

OwnedDescriptor acceptConnection(int listener) {
  return prepared(::accept(listener, nullptr, nullptr));
}

std::optional<Pipe> makePipe(bool waits) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) return std::nullopt;
  for (const int end : ends) {
    keepFromChildren(end);
    if (!waits) neverWait(end);
  }
  return Pipe{OwnedDescriptor(ends[0]), OwnedDescriptor(ends[1])};
}

#endif

bool connectLocalSocket(int socket, const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& text = path.native();
  if (text.size() >= sizeof(address.sun_path)) {
    errno = ENAMETOOLONG;
    return false;
  }
  text.copy(address.sun_path, text.size());
  return ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

ssize_t sendQuietly(int socket, std::string_view bytes) {
#ifdef MSG_NOSIGNAL
  constexpr int flags = MSG_NOSIGNAL;
#else
  constexpr int flags = 0;  // set on the socket itself
#endif
  return ::send(socket, bytes.data(), bytes.size(), flags);
}

}  // namespace veloria
