#pragma once

#include <cstdint>
#include <string>

#include "base/Result.h"

namespace veloria {

/// The source that carries what an output plays.
struct Monitor {
  std::uint32_t index = 0;  ///< never used twice by one server
  std::string name;
};

/// What the sound server says about an output.
struct Output {
  std::string description;  ///< for people
  std::uint32_t monitorIndex = 0;
  std::string monitorName;  ///< empty when there is none
};

/// The monitor of `output`, or why there is none. Nothing else is ever recorded in its place: it could be a microphone.
Result<Monitor> monitorOf(const Output& output);

}  // namespace veloria
