#pragma once

#include <vector>

#include "gpu/Texture.h"

namespace veloria::gpu::recording {

class RecordingDevice;

/// Real bytes. Nothing runs functions here, so what a function may have written is not known: reading it fails, as
/// does reading what was never written.
class RecordingTexture final : public Texture {
 public:
  RecordingTexture(RecordingDevice& device, TextureDescriptor descriptor);

  bool belongsTo(const RecordingDevice& device) const { return &device_ == &device; }
  void writtenByFunction() { state_ = State::unknown; }

 private:
  enum class State : std::uint8_t { undefined, known, unknown };

  void doWrite(std::span<const std::byte> rows) override;
  void doRead(std::span<std::byte> rows) const override;

  RecordingDevice& device_;
  State state_ = State::undefined;
  std::vector<std::byte> bytes_;
};

}  // namespace veloria::gpu::recording
