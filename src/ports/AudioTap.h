#pragma once

#include <functional>
#include <string>

#include "ports/AudioBlock.h"

namespace veloria {

/// Listens to what the computer plays (never to a microphone) and hands it over block by block. start() and stop()
/// belong to the main thread, and neither waits for the sound system.
class AudioTap {
 public:
  /// All set. They are called one at a time, on a thread of the tap's (or from inside start()), and must not call the
  /// tap.
  struct Handlers {
    std::function<void(const AudioBlock&)> audio;
    std::function<void()> started;                        ///< at most once, before the first block
    std::function<void(const std::string& text)> failed;  ///< the last call of all; says why, for a person
  };

  virtual ~AudioTap() = default;
  AudioTap(const AudioTap&) = delete;
  AudioTap& operator=(const AudioTap&) = delete;

  /// Begins to listen: about 1024 frames a block at 48 kHz. Where the sound system delivers nothing while nothing
  /// plays, the tap hands over silence once, so that no loudness stays. A tap that already runs is stopped first.
  virtual void start(Handlers handlers) = 0;

  /// No handler runs once this has returned. In any state, also after a failure. Destroying the tap stops it too.
  virtual void stop() = 0;

 protected:
  AudioTap() = default;
};

}  // namespace veloria
