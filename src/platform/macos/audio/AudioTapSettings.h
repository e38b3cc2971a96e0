#pragma once

namespace veloria {

/// How the sound is tapped: what this Mac plays, but for what this process plays itself.
struct AudioTapSettings {
  static constexpr const char* queueLabel = "com.tollmere.Veloria.audio";
  static constexpr int sampleRate = 48000;
  static constexpr int channelCount = 2;
  static constexpr bool excludesOwnSound = true;
  /// The stream has to carry pictures too: as few and as small as can be.
  static constexpr int pictureSide = 2;
  static constexpr int secondsPerPicture = 1;
  static constexpr int queueDepth = 3;
  static constexpr const char* noDisplay = "No display to attach the audio tap to.";
};

}  // namespace veloria
