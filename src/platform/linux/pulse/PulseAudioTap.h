#pragma once

#include <memory>

#include "ports/AudioTap.h"

namespace veloria {

class PulseSession;

/// Records the monitor of the default output through the PulseAudio client library: 48 kHz, two channels, 32-bit
/// floats, about 1024 frames at a time. Follows the default output when the user chooses another one; without any
/// output it waits for one. Never records anything but a monitor, lets no one move the recording elsewhere, does not
/// keep an idle output awake, and never starts a sound server.
///
/// Fails when the server can't be reached, refuses or goes away, when the default output has no monitor, and when
/// somebody ends the recording. Everything happens on a thread of its own named "veloria-audio", connecting included,
/// so start() waits for nothing and stop() only for what that thread is just doing.
///
/// PipeWire's server for PulseAudio programs offers the same interface; this was written for it too but has been run
/// with PulseAudio 16 only.
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
