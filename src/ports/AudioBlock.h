#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

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

/// One delivery of an audio tap. The samples are valid during the call that hands it over.
struct AudioBlock {
  /// False for other deliveries on the same stream, such as pictures: counted and ignored.
  bool isAudio = true;
  /// Nothing if the system gave no format; the samples are then ignored.
  std::optional<AudioFormat> format;
  /// Why the samples could not be read, for diagnostics ("bufferListStatus=-12731"); empty if they could.
  std::string unreadable;
  /// One buffer of samples per channel, nominally within -1...1 but unchecked. A system with interleaved channels
  /// passes one buffer.
  std::span<const std::span<const float>> channels;
};

}  // namespace veloria
