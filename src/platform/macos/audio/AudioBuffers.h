#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "ports/AudioBlock.h"

namespace veloria {

/// What the system's stream description says of samples, as far as it matters here.
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

/// Float only where the samples are plain floats in this machine's byte order.
AudioFormat audioFormat(const StreamDescription& description);

/// A buffer's samples, in place; bytes behind the last whole one are left out. Nothing where they stand askew in
/// memory.
std::optional<std::span<const float>> floatsIn(std::span<const std::byte> bytes);

/// The block for the system's list of buffers (one a channel, or one with the channels interleaved): each is one
/// channel, as it is. Other samples than 32-bit floats are left out. The block refers to `channels`, whose content is
/// replaced, and to the buffers.
AudioBlock blockOf(const AudioFormat& format, std::span<const std::span<const std::byte>> buffers,
                   std::vector<std::span<const float>>& channels);

/// The block where a call of the system has failed: `what` is "sizeStatus" or "bufferListStatus".
AudioBlock unreadableBlock(const AudioFormat& format, std::string_view what, int status);

/// The block for what came without a description.
AudioBlock undescribedBlock();

/// The block for what is no sound.
AudioBlock pictureBlock();

}  // namespace veloria
