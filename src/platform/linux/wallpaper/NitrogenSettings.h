#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace veloria {

/// The picture in nitrogen's bg-saved.cfg: the one for the whole desktop (section "xin_-1"), else for the first monitor
/// ("xin_0"), else the first one.
std::optional<std::string> nitrogenPictureFromText(std::string_view settings);

}  // namespace veloria
