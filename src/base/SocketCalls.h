#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/OwnedDescriptor.h"

/// Calls on sockets and pipes that differ between systems. Child processes do not inherit the descriptors, except, on
/// systems that can't set this atomically, one that another thread starts in the same instant. Failures set errno. Any
/// thread.
namespace veloria {

/// A non-blocking local stream socket; empty on failure.
OwnedDescriptor makeLocalSocket();

/// Connects such a socket to the one at `path`. False on failure, also if it would have to wait.
bool connectLocalSocket(int socket, const std::filesystem::path& path);

/// The next connection of a listening local socket, non-blocking too; empty if there is none.
OwnedDescriptor acceptConnection(int listener);

/// send() on such a socket. If the other end is closed the error is EPIPE; no signal is raised.
ssize_t sendQuietly(int socket, std::string_view bytes);

struct Pipe {
  OwnedDescriptor readable;
  OwnedDescriptor writable;
};

/// `waits`: whether reads and writes block.
std::optional<Pipe> makePipe(bool waits);

}  // namespace veloria
