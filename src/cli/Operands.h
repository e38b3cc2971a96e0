#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veloria::cli {

/// Values on a command line. Those that are named after what they return throw UsageError when the text is something
/// else.

/// The most bytes of a channel's or session's name.
inline constexpr std::size_t longestName = 64;

/// What a member of the state file with this name means if it is no channel, as the end of a sentence.
std::optional<std::string_view> reservedMeaning(std::string_view name);

/// A name for a channel: plain text, and not one of the state file's own members.
std::string channelName(const std::string& text);

/// A name for a session: plain text.
std::string sessionName(const std::string& text);

/// A finite number, whatever the locale. `what` names the operand in the error.
double finiteNumber(std::string_view what, const std::string& text);

/// A finite number of seconds above 0.
double lifetime(const std::string& text);

/// "#rrggbb" in lower case for "#rrggbb" or "rrggbb", hexadecimal digits of either case; nothing for anything else.
std::optional<std::string> normalisedColour(std::string_view text);

/// 2 to 4 colours, normalised.
std::vector<std::string> paletteColours(const std::vector<std::string>& texts);

}  // namespace veloria::cli
