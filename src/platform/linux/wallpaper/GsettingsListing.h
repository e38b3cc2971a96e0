#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture's address in what `gsettings list-recursively` prints for a desktop's background: the value of
/// picture-uri, or picture-filename where the desktop has that instead. With `dark`, picture-uri-dark comes first.
/// Nothing when there is none or picture-options says that none is shown.
std::optional<std::string> gsettingsPictureFromText(std::string_view listing, bool dark);

/// True when what `gsettings get org.gnome.desktop.interface color-scheme` prints asks for the dark style.
bool gsettingsPrefersDark(std::string_view value);

}  // namespace veloria
