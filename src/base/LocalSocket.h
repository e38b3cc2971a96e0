#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Result.h"

/// The local socket through which one user's programs talk to the running application. One connection is one question:
/// the client sends one line of JSON, an object whose "command" says what it wants, the application answers with one
/// line of JSON and closes. An answer with an "error" (text) means that the command failed.
///
///   {"command": "status"}                 the status object
///   {"command": "preset", "name": "Rave"} {}
///   {"command": "pause"}                  {}
///   {"command": "resume"}                 {}
///   {"command": "settings"}               asks for the settings window; {}
namespace veloria {

/// The most bytes of a question and of an answer, without the line feed.
inline constexpr std::size_t maximumQuestionBytes = 4096;
inline constexpr std::size_t maximumAnswerBytes = std::size_t{1} << 20;

/// Where the socket is: `Veloria/control` in $XDG_RUNTIME_DIR, or in a folder /tmp/Veloria-<user id> where that is not
/// set or not absolute. Nothing when the path is longer than a socket's address can be.
std::optional<std::filesystem::path> controlSocketPath(const Environment& environment);

/// Whether the program at the other end of a connected local socket is this user's. Any thread.
bool peerIsThisUser(int socket);

/// What became of a question.
struct SocketReply {
  bool connected = false;  ///< somebody of this user listens there
  std::string answer;      ///< without the line feed; empty when none came
};

/// Asks the application that listens at `path` and waits for its answer, in all at most `seconds`. A listener that
/// belongs to another user counts as none. The error is for what went wrong after the connection was made: no answer
/// in time, one that is cut off or too long. Any thread; blocks.
Result<SocketReply> askLocalSocket(const std::filesystem::path& path, std::string_view question, double seconds);

}  // namespace veloria
