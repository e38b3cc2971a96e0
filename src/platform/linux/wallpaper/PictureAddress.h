#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace veloria {

/// The path that an address in somebody's settings leads to: a file: URI of this machine (percent-decoded), a path
/// below `~/` or `$HOME/`, or an absolute path. Nothing for anything else: other schemes and hosts, relative paths, an
/// address with a NUL in it or longer than a path can be. Whether there is a file is not looked at.
std::optional<std::filesystem::path> localPath(std::string_view address, const std::filesystem::path& home);

}  // namespace veloria
