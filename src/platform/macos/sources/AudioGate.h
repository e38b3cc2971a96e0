#pragma once

#include <mutex>
#include <string>

#include "ports/AudioTap.h"

namespace veloria {

/// Serializes the system's reports, which come on several threads, as AudioTap promises: one handler at a time,
/// started() once and before the first block, nothing after a failure or close(). Any thread.
class AudioGate {
 public:
  explicit AudioGate(AudioTap::Handlers handlers);

  void started();
  void audio(const AudioBlock& block);
  void failed(const std::string& text);
  /// Waits for a running handler.
  void close();

 private:
  void tellStarted();

  std::mutex lock_;
  AudioTap::Handlers handlers_;
  bool started_ = false;
  bool closed_ = false;
};

}  // namespace veloria
