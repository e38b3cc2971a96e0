#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "base/Result.h"

namespace veloria {

/// The source that carries the sound of an output.
struct Monitor {
  std::uint32_t index = 0;  ///< a server never reuses one
  std::string name;
};

/// The sound server's description of an output.
struct Output {
  std::string description;  ///< for people
  std::uint32_t monitorIndex = 0;
  std::string monitorName;  ///< empty if there is none
};

/// The monitor of `output`, or why there is none. There is no substitute: another source could be a microphone.
Result<Monitor> monitorOf(const Output& output);

/// Separates interleaved pairs of floats in the machine's byte order: left, right, left, ... `bytes` needs no
/// alignment; an incomplete pair at its end is ignored. Returns the number of frames written, at most the size of the
/// shorter of `left` and `right`.
std::size_t deinterleave(std::span<const std::byte> bytes, std::span<float> left, std::span<float> right);

}  // namespace veloria
