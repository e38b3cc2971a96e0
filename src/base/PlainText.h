#pragma once

#include <string>
#include <string_view>

namespace veloria {

/// 1 to `most` bytes of UTF-8 without control characters (below U+0020, U+007F to U+009F).
bool isPlainText(std::string_view text, std::size_t most);

/// `text` with A to Z in lower case; all other bytes are kept.
std::string lowerCased(std::string_view text);

/// `text` for a terminal: '?' for each byte that is a control character or not UTF-8, and "..." after the first 300
/// bytes.
std::string printable(std::string_view text);

}  // namespace veloria
