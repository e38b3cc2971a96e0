#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <stdexcept>
#include <string>

#include "gpu/Device.h"
#include "gpu/recording/RecordingCommandBuffer.h"
#include "gpu/recording/RecordingLog.h"
#include "gpu/recording/RecordingQueue.h"
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
  bool commandBuffer = false;       ///< nullptr
  bool makeTexture = false;         ///< DeviceError
  bool makeRenderPipeline = false;  ///< DeviceError
};

class RecordingDevice final : public Device {
 public:
  /// Every library that is made of this device has exactly these functions.
  explicit RecordingDevice(std::set<std::string> functions);
  ~RecordingDevice() override;

  std::string name() const override { return "recording"; }
  bool lost() const override { return lost_; }
  void waitIdle() override { completeAll(); }

  RecordingLog& log() { return log_; }
  Failures& failures() { return failures_; }

  /// Buffers complete as soon as they are committed (the default), or when completeNext() or something that waits says
  /// so. Handlers are called on this thread.
  void setCompletesAtOnce(bool on) { completesAtOnce_ = on; }
  /// What handlers get.
  void setCompletion(const Completion& completion) { completion_ = completion; }
  /// Completes the oldest buffer in flight; false when there is none.
  bool completeNext();
  void completeAll();
  std::size_t inFlight() const { return inFlight_.size(); }

  /// As if the driver had lost the device: what is in flight fails, and so does everything from now on.
  void lose();

  /// For the parts of this back end.
  std::uint64_t nextBufferNumber() { return ++bufferNumber_; }
  void committed(RecordingCommandBuffer& buffer);

 private:
  std::unique_ptr<Library> doMakeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<CommandQueue> doMakeCommandQueue() override;
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<ComputePipeline> doMakeComputePipeline(const Library& library, const std::string& function) override;
  std::unique_ptr<RenderPipeline> doMakeRenderPipeline(const Library& library,
                                                       const RenderPipelineDescriptor& descriptor) override;
  void refuseIf(bool failure, const char* what) const;

  std::set<std::string> functions_;
  RecordingLog log_;
  Failures failures_;
  Completion completion_;
  std::deque<RecordingCommandBuffer*> inFlight_;
  std::uint64_t bufferNumber_ = 0;
  bool completesAtOnce_ = true;
  bool lost_ = false;
};

}  // namespace veloria::gpu::recording
