#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Surface.h"

/// A device for tests: it writes down what it is asked, keeps the bytes that textures are given, runs no functions, and
/// fails on everything that it can't give an honest answer to. One thread.
namespace veloria::gpu::recording {

class RecordingDevice;

/// The test asked for something that a recording can't answer.
class RecordingError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

enum class CallKind : std::uint8_t { makeTexture, makePipeline, frame, run, present, commit };

/// One call, as plain data. Fields that a kind has no use for stay empty.
struct Call {
  CallKind kind = CallKind::commit;
  std::string label;                       ///< of a pass, frame or texture
  std::string function{};                  ///< of a pass or pipeline: the compute or fragment function
  std::vector<const Texture*> textures{};  ///< what a pass reads, its images last; may be gone by now
  std::vector<std::byte> bytes{};          ///< of a pass
  Size size{};                             ///< of the target
  const Texture* target = nullptr;         ///< of a pass

  /// What a pass reads at an index; nullptr when that is nothing.
  const Texture* texture(std::size_t index) const { return index < textures.size() ? textures[index] : nullptr; }
  /// The bytes as a value of the layout's type. Throws std::length_error unless the sizes are equal.
  template <typename Value>
  Value as() const {
    if (bytes.size() != sizeof(Value)) throw std::length_error(function + " was given bytes of another layout");
    Value value;
    std::memcpy(&value, bytes.data(), sizeof(Value));
    return value;
  }
};

/// Everything that was asked of a device, in order.
struct RecordingLog {
  std::vector<Call> calls;

  std::vector<Call> passes() const;
  std::size_t count(CallKind kind) const;
  void clear() { calls.clear(); }
};

/// Real bytes. What a function may have written is not known: reading it fails, as does reading what was never written.
class RecordingTexture final : public Texture {
 public:
  RecordingTexture(RecordingDevice& device, TextureDescriptor descriptor)
      : Texture(std::move(descriptor)), device_(device), bytes_(byteCount()) {}

  const RecordingDevice& device() const { return device_; }
  void writtenByFunction() { known_ = false; }

 private:
  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;

  RecordingDevice& device_;
  bool known_ = false;
  std::vector<std::byte> bytes_;
};

/// Writes what it is asked to the device's log at once, also when it is never committed.
class RecordingFrame final : public Frame {
 public:
  explicit RecordingFrame(RecordingDevice& device) : device_(device) {}

  bool inFlight() const { return inFlight_; }
  /// Calls the handler.
  void complete(const Completion& completion);

 private:
  void doRun(const Pass& pass) override;
  void doPresent(Drawable& drawable) override;
  void doCommit(CompletedHandler handler) override;

  RecordingTexture& own(const Texture& texture) const;

  RecordingDevice& device_;
  CompletedHandler handler_;
  bool inFlight_ = false;
};

class RecordingQueue final : public FrameQueue {
 public:
  explicit RecordingQueue(RecordingDevice& device);
  ~RecordingQueue() override;
  void setProfiling(bool) override {}

 private:
  /// Throws RecordingError when three frames are in flight: another device would wait for the oldest one, and here
  /// nothing would end that wait.
  Frame* doBegin(const char* label) override;

  RecordingDevice& device_;
  std::array<std::unique_ptr<RecordingFrame>, 3> frames_;
  std::size_t next_ = 0;
};

class RecordingDevice final : public Device {
 public:
  /// What the device refuses while a switch is on.
  struct Failures {
    bool frame = false;         ///< nullptr
    bool makeTexture = false;   ///< DeviceError
    bool makePipeline = false;  ///< DeviceError
  };

  /// Every library that is made of this device has exactly these functions.
  explicit RecordingDevice(std::set<std::string> functions) : functions_(std::move(functions)) {}
  ~RecordingDevice() override { completeAll(); }

  std::string name() const override { return "recording"; }
  bool lost() const override { return lost_; }
  void waitIdle() override { completeAll(); }
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override { return std::make_unique<RecordingQueue>(*this); }

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

  /// For its frames.
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
  bool completesAtOnce_ = true;
  bool lost_ = false;
};

/// A window that exists only in the test: one drawable at a time, taken until it is presented.
class RecordingSurface final : public Surface {
 public:
  explicit RecordingSurface(RecordingDevice& device) : device_(device) {}

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override { return format_; }
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

  /// Without images nextDrawable() gives nullptr.
  void setAvailable(bool on) { available_ = on; }

 private:
  RecordingDevice& device_;
  std::unique_ptr<Drawable> drawable_;
  Size size_;
  PixelFormat format_ = PixelFormat::invalid;
  bool available_ = true;
};

}  // namespace veloria::gpu::recording
