#pragma once

#include <functional>
#include <string>

#include "ports/AudioBlock.h"

namespace veloria {

/// Port: taps what the computer plays, never a microphone, and delivers it in blocks. Call start() and stop() on the
/// main thread; neither waits for the sound system.
class AudioTap {
 public:
  /// All must be set. They are called one at a time, on the tap's own thread or inside start(), and must not call the
  /// tap.
  struct Handlers {
    std::function<void(const AudioBlock&)> audio;
    std::function<void()> started;                        ///< at most once, before the first block
    std::function<void(const std::string& text)> failed;  ///< the last call; the reason, for people
  };

  virtual ~AudioTap() = default;
  AudioTap(const AudioTap&) = delete;
  AudioTap& operator=(const AudioTap&) = delete;

  /// Starts listening: about 1024 frames per block at 48 kHz. If the sound system delivers nothing while nothing plays,
  /// the tap delivers silence once, so that the level drops. A tap that already runs is stopped first.
  virtual void start(Handlers handlers) = 0;

  /// No handler runs after this has returned. Allowed in any state, also after a failure. The destructor stops the tap
  /// too.
  virtual void stop() = 0;

 protected:
  AudioTap() = default;
};

}  // namespace veloria
