#pragma once

#include <cstddef>

#include "gpu/Types.h"

/// Between stored texels and floats.
namespace veloria::gpu::cpu::texels {

/// A half float's two bytes in this machine's order.
float fromHalf(const std::byte* half);
/// Rounds to nearest, ties to even; beyond the range to infinity. What is not a number stays so.
void toHalf(float value, std::byte* half);

/// A byte of an 8-bit format. The colours (channels 0 to 2) of bgra8UnormSrgb are decoded to linear light, and encoded.
float fromByte(std::byte byte, PixelFormat format, int channel);
std::byte toByte(float value, PixelFormat format, int channel);

}  // namespace veloria::gpu::cpu::texels
