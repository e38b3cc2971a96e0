#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "gpu/Device.h"
#include "gpu/recording/RecordingFrame.h"
#include "gpu/recording/RecordingLog.h"
#include "gpu/recording/RecordingSurface.h"
#include "gpu/recording/RecordingTexture.h"

/// A device for tests: it writes down what it is asked, keeps the bytes that textures are given, runs no functions, and
/// fails on everything that it can't give an honest answer to. One thread.
namespace veloria::gpu::recording {

/// The test asked for something that a recording can't answer.
class RecordingError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// What the device refuses while a switch is on.
struct Failures {
  bool frame = false;         ///< nullptr
  bool makeTexture = false;   ///< DeviceError
  bool makePipeline = false;  ///< DeviceError
};

class RecordingLibrary final : public Library {
 public:
  explicit RecordingLibrary(std::set<std::string> functions) : functions_(std::move(functions)) {}
  bool contains(const std::string& function) const override { return functions_.contains(function); }

 private:
  std::set<std::string> functions_;
};

class RecordingPipeline final : public Pipeline {
 public:
  explicit RecordingPipeline(const PipelineDescriptor& descriptor) : Pipeline(descriptor) {}
};

class RecordingDevice final : public Device {
 public:
  /// Every library that is made of this device has exactly these functions.
  explicit RecordingDevice(std::set<std::string> functions);
  ~RecordingDevice() override;

  std::string name() const override { return "recording"; }
  bool lost() const override { return lost_; }
  void waitIdle() override { completeAll(); }
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override;

  RecordingLog& log() { return log_; }
  Failures& failures() { return failures_; }

  /// Frames complete as soon as they are committed (the default), or when completeNext() or something that waits says
  /// so. Handlers are called on this thread.
  void setCompletesAtOnce(bool on) { completesAtOnce_ = on; }
  /// What handlers get.
  void setCompletion(const Completion& completion) { completion_ = completion; }
  /// Completes the oldest frame in flight; false when there is none.
  bool completeNext();
  void completeAll();
  std::size_t inFlight() const { return inFlight_.size(); }

  /// As if the driver had lost the device: what is in flight fails, and so does everything from now on.
  void lose();

  /// For the parts of this back end.
  std::uint64_t nextFrameNumber() { return ++frameNumber_; }
  void committed(RecordingFrame& frame);

 private:
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) override;
  void refuseIf(bool failure, const char* what) const;

  std::set<std::string> functions_;
  RecordingLog log_;
  Failures failures_;
  Completion completion_;
  std::deque<RecordingFrame*> inFlight_;
  std::uint64_t frameNumber_ = 0;
  bool completesAtOnce_ = true;
  bool lost_ = false;
};

}  // namespace veloria::gpu::recording
