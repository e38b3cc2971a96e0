#pragma once

#include <optional>
#include <span>
#include <string>

#include "ports/AudioFormat.h"

namespace veloria {

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
