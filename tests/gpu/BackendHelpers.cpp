#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>

#include "Backend.h"

namespace veloria::gpu::test {

std::vector<std::byte> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> chars{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::vector<std::byte> bytes(chars.size());
  std::transform(chars.begin(), chars.end(), bytes.begin(), [](char c) { return static_cast<std::byte>(c); });
  return bytes;
}

float fromHalf(std::uint16_t half) {
  const float sign = (half & 0x8000) != 0 ? -1.0F : 1.0F;
  const int exponent = half >> 10 & 31;
  const auto mantissa = static_cast<float>(half & 1023);
  if (exponent == 31) return mantissa > 0 ? NAN : sign * INFINITY;
  if (exponent == 0) return sign * std::ldexp(mantissa, -24);
  return sign * std::ldexp(mantissa + 1024, exponent - 25);
}

std::uint16_t toHalf(float value) {
  const auto sign = static_cast<std::uint16_t>(std::signbit(value) ? 0x8000 : 0);
  const float magnitude = std::fabs(value);
  if (magnitude < std::ldexp(1.0F, -14)) {
    return static_cast<std::uint16_t>(sign | std::lround(std::ldexp(magnitude, 24)));
  }
  int exponent = 0;
  const float fraction = std::frexp(magnitude, &exponent);  // 0.5 to 1
  const auto bits = ((exponent + 14) << 10) + std::lround(std::ldexp(fraction, 11)) - 1024;
  return static_cast<std::uint16_t>(sign | bits);
}

std::vector<float> readFloats(const Texture& texture) {
  std::vector<std::uint16_t> halves(texture.byteCount() / 2);
  texture.read(std::as_writable_bytes(std::span(halves)));
  std::vector<float> floats(halves.size());
  std::transform(halves.begin(), halves.end(), floats.begin(), fromHalf);
  return floats;
}

void writeFloats(Texture& texture, const std::vector<float>& values) {
  std::vector<std::uint16_t> halves(values.size());
  std::transform(values.begin(), values.end(), halves.begin(), toHalf);
  texture.write(std::as_bytes(std::span(halves)));
}

}  // namespace veloria::gpu::test
