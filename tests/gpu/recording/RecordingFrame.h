#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "gpu/Frame.h"
#include "gpu/recording/RecordingLog.h"

namespace veloria::gpu::recording {

class RecordingDevice;
class RecordingTexture;

/// Writes what it is asked to the device's log at once, also when it is never committed.
class RecordingFrame final : public Frame {
 public:
  explicit RecordingFrame(RecordingDevice& device) : device_(device) {}

  void begin(const char* label, std::uint64_t number);
  bool inFlight() const { return inFlight_; }
  /// Calls the handler.
  void complete(const Completion& completion);

 private:
  void doRun(const Pass& pass) override;
  void doPresent(Drawable& drawable) override;
  void doCommit(CompletedHandler handler) override;

  void record(Call call);
  /// The device's own texture. Throws RecordingError for another's.
  RecordingTexture& ownTexture(const Texture& texture) const;

  RecordingDevice& device_;
  CompletedHandler handler_;
  std::uint64_t number_ = 0;
  bool inFlight_ = false;
};

class RecordingQueue final : public FrameQueue {
 public:
  explicit RecordingQueue(RecordingDevice& device);
  ~RecordingQueue() override;

  void setProfiling(bool on) override { profiling_ = on; }
  bool profiling() const { return profiling_; }

 private:
  /// Fails with RecordingError where a device would wait for the oldest of three, since nothing would end the wait.
  Frame* doBegin(const char* label) override;

  RecordingDevice& device_;
  std::array<std::unique_ptr<RecordingFrame>, 3> frames_;
  std::size_t next_ = 0;
  bool profiling_ = false;
};

}  // namespace veloria::gpu::recording
