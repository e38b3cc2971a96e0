#pragma once

#include <optional>
#include <span>
#include <string>

#include "ports/AudioFormat.h"

namespace veloria {

/// One delivery of an audio tap. The samples are valid during the call that hands it over.
struct AudioBlock {
  /// False for what else the system delivers in the same way (a screen stream carries pictures too): counted, ignored.
  bool isAudio = true;
  /// Nothing when the system gave no description; the samples are then not used.
  std::optional<AudioFormat> format;
  /// Why the samples could not be had, as diagnostics show it ("bufferListStatus=-12731"); empty when they could.
  std::string unreadable;
  /// One buffer of samples a channel, nominally within -1...1, but whatever the system holds may be in them. A system
  /// that interleaves its channels and does not take them apart hands over one buffer.
  std::span<const std::span<const float>> channels;
};

}  // namespace veloria
