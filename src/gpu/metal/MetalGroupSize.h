#pragma once

#include <algorithm>
#include <cstdint>

#include "gpu/Types.h"

namespace veloria::gpu::metal {

/// Threads of a group: a row is one execution width wide, with as many rows as fit. `executionWidth` and `maxThreads`
/// as the compute pipeline gives them.
constexpr Size groupSizeFor(std::uint32_t executionWidth, std::uint32_t maxThreads) {
  const std::uint32_t width = std::max(executionWidth, 1U);
  return {width, std::max(maxThreads / width, 1U)};
}

}  // namespace veloria::gpu::metal
