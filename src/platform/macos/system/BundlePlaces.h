#pragma once

#include <filesystem>

namespace veloria {

/// The nimbra command that ships with the application `bundle`.
inline std::filesystem::path bundledCommand(const std::filesystem::path& bundle) {
  return bundle / "Contents" / "MacOS" / "nimbra";
}

}  // namespace veloria
