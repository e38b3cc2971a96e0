#pragma once

#include <string>
#include <string_view>

namespace veloria {

/// 1 to `most` bytes of UTF-8 without control characters (below U+0020, U+007F to U+009F).
bool isPlainText(std::string_view text, std::size_t most);

/// With a to z for A to Z; all other bytes as they are.
std::string lowerCased(std::string_view text);

/// `text` for a terminal: a '?' for each byte that one might take for a command or can't show, and "..." for what
/// follows the first 300 bytes.
std::string printable(std::string_view text);

}  // namespace veloria
