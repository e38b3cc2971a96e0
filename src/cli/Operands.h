#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veloria::cli {

/// The operands on a command line. channelName(), sessionName(), finiteNumber(), lifetime() and paletteColors() throw
/// UsageError if the text is invalid.

/// The maximum length of a channel's or session's name, in bytes.
inline constexpr std::size_t longestName = 64;

/// The meaning of a reserved member of the state file, as the end of a sentence; nothing for other names.
std::optional<std::string_view> reservedMeaning(std::string_view name);

/// A channel's name: plain text, and not a reserved member of the state file.
std::string channelName(const std::string& text);

/// A session's name: plain text.
std::string sessionName(const std::string& text);

/// A finite number, in the same form in every locale. `what` names the operand in the error.
double finiteNumber(std::string_view what, const std::string& text);

/// A finite number of seconds above 0.
double lifetime(const std::string& text);

/// "#rrggbb" in lower case for "#rrggbb" or "rrggbb", hexadecimal digits of either case; nothing for anything else.
std::optional<std::string> normalizedColor(std::string_view text);

/// 2 to 4 colors, normalized.
std::vector<std::string> paletteColors(const std::vector<std::string>& texts);

}  // namespace veloria::cli
