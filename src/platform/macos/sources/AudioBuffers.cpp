#include "platform/macos/sources/AudioBuffers.h"

#include <string>

namespace veloria {

AudioFormat audioFormat(const StreamDescription& description) {
  const bool plain = (description.formatFlags & (floatFlag | bigEndianFlag)) == floatFlag;
  return {.sampleRate = description.sampleRate,
          .channels = description.channelsPerFrame,
          .flags = description.formatFlags,
          .bitsPerChannel = description.bitsPerChannel,
          .isFloat = description.formatID == linearPcm && plain};
}

std::optional<std::span<const float>> floatsIn(std::span<const std::byte> bytes) {
  if (reinterpret_cast<std::uintptr_t>(bytes.data()) % alignof(float) != 0) return std::nullopt;
  return std::span(reinterpret_cast<const float*>(bytes.data()), bytes.size() / sizeof(float));
}

AudioBlock blockOf(const AudioFormat& format, std::span<const std::span<const std::byte>> buffers,
                   std::vector<std::span<const float>>& channels) {
  AudioBlock block;
  block.format = format;
  channels.clear();
  if (!format.isFloat || format.bitsPerChannel != 32) return block;
  for (const std::span<const std::byte> buffer : buffers) {
    const auto samples = floatsIn(buffer);
    if (!samples) {
      block.unreadable = "misaligned";
      return block;
    }
    channels.push_back(*samples);
  }
  block.channels = channels;
  return block;
}

AudioBlock unreadableBlock(const AudioFormat& format, std::string_view what, int status) {
  AudioBlock block;
  block.format = format;
  block.unreadable = std::string(what) + "=" + std::to_string(status);
  return block;
}

AudioBlock undescribedBlock() {
  return {};
}

AudioBlock pictureBlock() {
  AudioBlock block;
  block.isAudio = false;
  return block;
}

}  // namespace veloria
