#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "ports/AudioBlock.h"

namespace veloria {

/// The parts of the system's stream description that matter here.
struct StreamDescription {
  double sampleRate = 0;
  std::uint32_t formatID = 0;
  std::uint32_t formatFlags = 0;
  std::uint32_t channelsPerFrame = 0;
  std::uint32_t bitsPerChannel = 0;
};

/// The system's codes.
inline constexpr std::uint32_t linearPcm = 0x6C70636D;  // "lpcm"
inline constexpr std::uint32_t floatFlag = 1;
inline constexpr std::uint32_t bigEndianFlag = 2;

/// `isFloat` only if the samples are plain floats in this machine's byte order.
AudioFormat audioFormat(const StreamDescription& description);

/// A buffer's samples, in place, without the bytes after the last whole one. Nothing if they are misaligned.
std::optional<std::span<const float>> floatsIn(std::span<const std::byte> bytes);

/// The block for the system's list of buffers (one per channel, or one with interleaved channels), each taken as one
/// channel. Has no channels if the samples are not 32-bit floats. The block refers to the buffers and to `channels`,
/// whose content is replaced.
AudioBlock blockOf(const AudioFormat& format, std::span<const std::span<const std::byte>> buffers,
                   std::vector<std::span<const float>>& channels);

/// The block for a failed call of the system; `what` is "sizeStatus" or "bufferListStatus".
AudioBlock unreadableBlock(const AudioFormat& format, std::string_view what, int status);

/// The block for a buffer without a description.
AudioBlock undescribedBlock();

/// The block for a picture, which is not sound.
AudioBlock pictureBlock();

}  // namespace veloria
