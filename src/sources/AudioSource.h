#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "ports/AudioTap.h"
#include "sources/AudioAnalysis.h"
#include "sources/AudioBands.h"

namespace veloria {

/// Hears what is playing and says how loud it is, five numbers at a time.
///
/// Main thread, but for bands(), isRunning(), lastError() and diagnostics(), which any thread may ask. Analysis runs on
/// the tap's thread. A tap that fails leaves the bands at zero and the reason in lastError(); nothing is tried again by
/// itself.
class AudioSource {
 public:
  using Bands = AudioBands;

  /// What has come from the tap since this object was made.
  struct Diagnostics {
    int callbackCount = 0;       ///< deliveries of any kind
    int audioCallbackCount = 0;  ///< those with audio
    int decodeFailures = 0;      ///< those of which the samples could not be used
    std::string lastFormatNote = "none";
  };

  /// Not running yet.
  explicit AudioSource(std::unique_ptr<AudioTap> tap);
  /// Stops.
  ~AudioSource();
  AudioSource(const AudioSource&) = delete;
  AudioSource& operator=(const AudioSource&) = delete;

  /// Returns at once; isRunning() holds from now on, until a stop or a failure. Does nothing while it runs. Starting
  /// after a stop or a failure begins afresh: no error, no memory of the sound before.
  void start();

  /// The bands are zero from now on. Keeps lastError().
  void stop();

  /// The newest analysis; zeros when silent, stopped or failed.
  Bands bands() const;
  bool isRunning() const;
  /// Why the tap failed since the last start; nothing when it did not.
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
