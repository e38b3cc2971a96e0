#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Result.h"

/// The local socket through which a user's programs talk to the running application. One connection carries one
/// question: the client sends one line of JSON, an object with a "command"; the application answers with one line of
/// JSON and closes. An answer with an "error" (text) means that the command failed.
///
///   {"command": "status"}                 the status object
///   {"command": "preset", "name": "Rave"} {}
///   {"command": "pause"}                  {}
///   {"command": "resume"}                 {}
///   {"command": "settings"}               opens the settings window; {}
namespace veloria {

/// The most bytes of a question and of an answer, without the line feed.
inline constexpr std::size_t maximumQuestionBytes = 4096;
inline constexpr std::size_t maximumAnswerBytes = std::size_t{1} << 20;

/// The socket's path: `Veloria/control` in $XDG_RUNTIME_DIR; if that is not set or not absolute,
/// `/tmp/Veloria-<user id>/control`. Nothing if the path is too long for a socket's address.
std::optional<std::filesystem::path> controlSocketPath(const Environment& environment);

/// Whether the program at the other end of a connected local socket runs as this user. Any thread.
bool peerIsThisUser(int socket);

/// The outcome of a question.
struct SocketReply {
  bool connected = false;  ///< a program of this user listens there
  std::string answer;      ///< without the line feed; empty if none came
};

/// Asks the application that listens at `path` and waits for its answer, at most `seconds` in all. A listener of
/// another user counts as none. The error tells of a failure after the connection was made: no answer in time, or one
/// that is cut off or too long. Any thread; blocks.
Result<SocketReply> askLocalSocket(const std::filesystem::path& path, std::string_view question, double seconds);

}  // namespace veloria
