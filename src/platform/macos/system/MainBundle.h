#pragma once

#include <filesystem>

namespace veloria {

/// The path of the application that this process belongs to; the executable's folder outside of one. Any thread.
std::filesystem::path mainBundle();

}  // namespace veloria
