#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <string>

#include "base/OwnedDescriptor.h"

namespace veloria::tests {

/// A listening socket at a path, for servers that a test plays itself.
class LocalListener {
 public:
  explicit LocalListener(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(::listen(socket_.get(), 4), 0);
  }

  /// Waits for a client; none after hangUp().
  OwnedDescriptor accept() const { return OwnedDescriptor(::accept(socket_.get(), nullptr, nullptr)); }
  void hangUp() const { ::shutdown(socket_.get(), SHUT_RDWR); }

  /// What a client sends at once; empty at its end.
  static std::string receive(const OwnedDescriptor& client) {
    std::array<char, 4096> bytes{};
    const ssize_t got = ::recv(client.get(), bytes.data(), bytes.size(), 0);
    return {bytes.data(), static_cast<std::size_t>(got > 0 ? got : 0)};
  }
  static void send(const OwnedDescriptor& client, const std::string& bytes) {
    ::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

 private:
  OwnedDescriptor socket_{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
};

}  // namespace veloria::tests
