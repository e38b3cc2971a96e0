#include "gpu/cpu/Texels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace veloria::gpu::cpu::texels {

namespace {

bool encodes(PixelFormat format, int channel) {
  return format == PixelFormat::bgra8UnormSrgb && channel < 3;
}

// IEC 61966-2-1.
double decoded(double c) {
  return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}
double encoded(double c) {
  return c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
}

}  // namespace

float fromHalf(const std::byte* half) {
  std::uint16_t bits = 0;
  std::memcpy(&bits, half, sizeof bits);
  const std::uint32_t sign = (bits & 0x8000U) << 16;
  const std::uint32_t size = bits & 0x7FFFU;
  if (size >= 0x7C00U) return std::bit_cast<float>(sign | 0x7F800000U | (size & 0x3FFU) << 13);
  // The exponent's bias differs by 112; a denormal half is a normal float.
  const float value = std::bit_cast<float>(size << 13) * 0x1p112F;
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) | sign);
}

void toHalf(float value, std::byte* half) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const auto sign = static_cast<std::uint16_t>(bits >> 16 & 0x8000U);
  const float size = std::fabs(value);
  std::uint16_t result = 0;
  if (std::isnan(value)) {
    result = 0x7E00U;
  } else if (size >= 65520.0F) {
    result = 0x7C00U;
  } else if (size < 0x1p-14F) {
    result = static_cast<std::uint16_t>(std::nearbyint(size * 0x1p24F));
  } else {
    const std::uint32_t rebased = std::bit_cast<std::uint32_t>(size) - (112U << 23);
    result = static_cast<std::uint16_t>((rebased + 0xFFFU + (rebased >> 13 & 1U)) >> 13);
  }
  result = static_cast<std::uint16_t>(result | sign);
  std::memcpy(half, &result, sizeof result);
}

float fromByte(std::byte byte, PixelFormat format, int channel) {
  const double value = std::to_integer<int>(byte) / 255.0;
  return static_cast<float>(encodes(format, channel) ? decoded(value) : value);
}

std::byte toByte(float value, PixelFormat format, int channel) {
  const double held = value > 0 ? std::min(static_cast<double>(value), 1.0) : 0.0;
  return static_cast<std::byte>(std::nearbyint((encodes(format, channel) ? encoded(held) : held) * 255));
}

}  // namespace veloria::gpu::cpu::texels
