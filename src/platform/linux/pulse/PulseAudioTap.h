#pragma once

#include <memory>

#include "ports/AudioTap.h"

namespace veloria {

class PulseSession;

/// Records the monitor of the default output through the PulseAudio client library: 48 kHz, two channels, 32-bit
/// floats, about 1024 frames at a time. Follows the default output if the user chooses another one, and waits for one
/// if there is none. Records nothing but a monitor, does not let the recording be moved elsewhere, does not keep an
/// idle output awake, and never starts a sound server.
///
/// Fails if the server can't be reached, refuses or goes away, if the default output has no monitor, or if another
/// program ends the recording. Everything, connecting included, runs on a thread of its own named "veloria-audio", so start()
/// never waits and stop() waits only for that thread's current callback.
///
/// PipeWire offers the same interface to PulseAudio programs, but this has been run with PulseAudio 16 only.
class PulseAudioTap final : public AudioTap {
 public:
  PulseAudioTap();
  ~PulseAudioTap() override;

  void start(Handlers handlers) override;
  void stop() override;

 private:
  std::unique_ptr<PulseSession> session_;
};

}  // namespace veloria
