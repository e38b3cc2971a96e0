#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture that swaybg shows on the output called `screen`, else on every output, else on the first one that it has
/// a picture for. `arguments`: the command lines of one or several swaybg processes, each argument ended by a NUL and
/// each process by one more.
std::optional<std::string> swaybgPictureFromText(std::string_view arguments, std::string_view screen);

}  // namespace veloria
