#pragma once

#include <cstdint>

namespace veloria {

/// How the system describes the samples of a block.
struct AudioFormat {
  double sampleRate = 0;  ///< frames per second
  std::uint32_t channels = 0;
  std::uint32_t flags = 0;  ///< in the system's own code; shown in diagnostics, not interpreted
  std::uint32_t bitsPerChannel = 0;
  bool isFloat = false;

  bool operator==(const AudioFormat&) const = default;
};

}  // namespace veloria
