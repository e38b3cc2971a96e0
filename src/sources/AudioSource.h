#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "ports/AudioTap.h"
#include "sources/AudioAnalysis.h"

namespace veloria {

/// The loudness of the sound that is playing, as five numbers.
///
/// Main thread, but for bands(), isRunning(), lastError() and diagnostics(), which any thread may call. Analysis runs
/// on the tap's thread. If the tap fails, the bands are zero and lastError() has the reason; there is no retry.
class AudioSource {
 public:
  using Bands = AudioBands;

  /// Counts of the deliveries from the tap since this object was made.
  struct Diagnostics {
    int callbackCount = 0;       ///< deliveries of any kind
    int audioCallbackCount = 0;  ///< those with audio
    int decodeFailures = 0;      ///< those with unusable samples
    std::string lastFormatNote = "none";
  };

  /// Not running yet.
  explicit AudioSource(std::unique_ptr<AudioTap> tap);
  /// Stops.
  ~AudioSource();
  AudioSource(const AudioSource&) = delete;
  AudioSource& operator=(const AudioSource&) = delete;

  /// Returns at once; isRunning() is true from now on, until a stop or a failure. No effect while it runs. A start
  /// after a stop or a failure clears the error and the memory of earlier sound.
  void start();

  /// The bands are zero from now on. Keeps lastError().
  void stop();

  /// The newest analysis; zeros when silent, stopped or failed.
  Bands bands() const;
  bool isRunning() const;
  /// Why the tap failed since the last start; empty if it did not.
  std::optional<std::string> lastError() const;
  Diagnostics diagnostics() const;

 private:
  struct Description {
    std::optional<AudioFormat> format;
    std::string unreadable;
    bool operator==(const Description&) const = default;
  };

  void receive(const AudioBlock& block);
  void describe(const AudioBlock& block);
  void fail(const std::string& text);

  std::unique_ptr<AudioTap> tap_;
  AudioAnalysis analysis_;                // the tap's thread, or the main thread while the tap is stopped
  std::optional<Description> described_;  // likewise

  mutable std::mutex lock_;  // guards the rest
  Bands bands_;
  bool isRunning_ = false;
  std::optional<std::string> lastError_;
  Diagnostics diagnostics_;
};

}  // namespace veloria
