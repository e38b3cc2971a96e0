#pragma once

#include <memory>

#include "ports/AudioTap.h"

namespace veloria {

/// Taps the sound that this Mac plays, except this process's own, through ScreenCaptureKit: 48 kHz, 32-bit floats.
/// Needs the Screen Recording permission, which the system asks the user for when a tap starts. Without it, and when
/// the system ends the tap, failed() gets the system's message. Sound arrives on a queue of its own; stop() waits for a
/// running handler. The system delivers silence as sound; if it stops delivering without an error, the last loudness
/// stays.
class MacAudioTap final : public AudioTap {
 public:
  MacAudioTap();
  ~MacAudioTap() override;

  void start(Handlers handlers) override;
  void stop() override;

 private:
  struct Run;
  std::unique_ptr<Run> run_;
};

}  // namespace veloria
