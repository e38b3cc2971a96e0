#pragma once

#include <mutex>
#include <string>

#include "ports/AudioTap.h"

namespace veloria {

/// Stands between the threads on which the system reports and a tap's handlers, and keeps what AudioTap promises: one
/// handler at a time, started() once and before the first block, nothing after a failure or close(). Any thread.
class AudioGate {
 public:
  explicit AudioGate(AudioTap::Handlers handlers);

  void started();
  void audio(const AudioBlock& block);
  void failed(const std::string& text);
  /// Waits for a handler that is just running.
  void close();

 private:
  void tellStarted();

  std::mutex lock_;
  AudioTap::Handlers handlers_;
  bool started_ = false;
  bool closed_ = false;
};

}  // namespace veloria
