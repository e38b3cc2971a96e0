#pragma once

#include <memory>

#include "ports/AudioTap.h"

namespace veloria {

/// Taps what this Mac plays through ScreenCaptureKit: 48 kHz, 32-bit floats, without what this process plays itself.
/// Needs the Screen Recording permission, which the system asks the user for when a tap starts; without it, and when
/// the system ends the tap, failed() gets the system's own words. Sound comes on a queue of its own; a stop waits for
/// the handler that is just running. The system delivers silence as it does sound; should it fall dumb without an
/// error, the last loudness stays.
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
