#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/OwnedDescriptor.h"

/// The calls on sockets and pipes that are other ones on other systems. Programs that are started inherit none of the
/// descriptors; where the system can't say so while it makes them, one that another thread starts in the same instant
/// may. Failures leave their reason in errno. Any thread.
namespace veloria {

/// A local stream socket on which nothing waits; empty where none can be had.
OwnedDescriptor makeLocalSocket();

/// Connects a socket of these to the one at `path`; false where that fails at once. Never waits.
bool connectLocalSocket(int socket, const std::filesystem::path& path);

/// The next connection of a listening local socket, on which nothing waits either; empty when there is none.
OwnedDescriptor acceptConnection(int listener);

/// Sends as send() does on a socket of these; where nobody reads any more that is EPIPE and no signal.
ssize_t sendQuietly(int socket, std::string_view bytes);

struct Pipe {
  OwnedDescriptor readable;
  OwnedDescriptor writable;
};

/// `waits`: whether reading and writing wait.
std::optional<Pipe> makePipe(bool waits);

}  // namespace veloria
