#pragma once

#include <cstring>
#include <deque>
#include <set>
#include <stdexcept>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Surface.h"

/// A device for tests: it writes down what it is asked, keeps the bytes that textures are given and runs no functions.
/// One thread.
namespace veloria::gpu::recording {

/// A pass as plain data.
struct RecordedPass {
  std::string label;
  std::string function;                  ///< the compute or fragment function
  std::vector<const Texture*> textures;  ///< what it reads, its images last; may be gone by now
  std::vector<std::byte> bytes;
  const Texture* target = nullptr;
  Size size;  ///< of the target

  /// What it reads at an index; nullptr if that is nothing.
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

class RecordingDevice final : public Device {
 public:
  /// Every library that is made of this device has exactly these functions.
  explicit RecordingDevice(std::set<std::string> functions) : functions_(std::move(functions)) {}
  ~RecordingDevice() override { waitIdle(); }

  std::string name() const override { return "recording"; }
  bool lost() const override { return lost_; }
  void waitIdle() override;
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override;

  /// Completes the oldest frame in flight. Handlers are called on this thread.
  void completeNext();
  /// As if the driver had lost the device: what is in flight fails, and so does everything from now on.
  void lose();

  /// What was asked since the last assignment of {}. Passes count as soon as they are encoded.
  struct Log {
    std::vector<RecordedPass> passes;
    std::size_t textures = 0, pipelines = 0, frames = 0, presents = 0, commits = 0;
  };
  Log log;
  /// What the device refuses while a switch is on.
  struct Failures {
    bool frame = false;         ///< nullptr
    bool makeTexture = false;   ///< DeviceError
    bool makePipeline = false;  ///< DeviceError
  };
  Failures failures;
  bool completesAtOnce = true;  ///< otherwise completeNext() and waitIdle() complete frames
  Completion completion;        ///< what handlers get
  std::deque<CompletedHandler> inFlight;

 private:
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) override;
  void refuseIf(bool failure, const char* what) const;

  std::set<std::string> functions_;
  bool lost_ = false;
};

/// A window that exists only in the test, with one drawable at a time.
class RecordingSurface final : public Surface {
 public:
  explicit RecordingSurface(RecordingDevice& device) : device_(device) {}

  void configure(Size size, PixelFormat wanted) override;
  PixelFormat format() const override { return format_; }
  Size size() const override { return size_; }
  Drawable* nextDrawable() override;

  bool available = true;  ///< if false, nextDrawable() gives nullptr

 private:
  RecordingDevice& device_;
  std::unique_ptr<Drawable> drawable_;
  Size size_;
  PixelFormat format_ = PixelFormat::invalid;
};

}  // namespace veloria::gpu::recording
