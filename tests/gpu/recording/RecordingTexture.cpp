#include "gpu/recording/RecordingTexture.h"

#include <algorithm>
#include <utility>

#include "gpu/recording/RecordingDevice.h"

namespace veloria::gpu::recording {

RecordingTexture::RecordingTexture(RecordingDevice& device, TextureDescriptor descriptor)
    : Texture(std::move(descriptor)), device_(device), bytes_(byteCount()) {}

void RecordingTexture::doWrite(std::span<const std::byte> rows) {
  Call call;
  call.kind = CallKind::writeTexture;
  call.label = descriptor().label;
  call.target = this;
  device_.log().add(std::move(call));
  std::copy(rows.begin(), rows.end(), bytes_.begin());
  state_ = State::known;
}

void RecordingTexture::doRead(std::span<std::byte> rows) const {
  if (state_ == State::undefined) throw RecordingError("texture \"" + descriptor().label + "\" was never written");
  if (state_ == State::unknown) {
    throw RecordingError("texture \"" + descriptor().label +
                         "\" may have been written by a function, which was not run");
  }
  Call call;
  call.kind = CallKind::readTexture;
  call.label = descriptor().label;
  call.target = this;
  device_.log().add(std::move(call));
  std::copy(bytes_.begin(), bytes_.end(), rows.begin());
}

}  // namespace veloria::gpu::recording
