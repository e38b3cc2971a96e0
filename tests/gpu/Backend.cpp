#include "Backend.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <span>

namespace veloria::tests {

namespace {

// Of a number that a half can hold, or of none.
std::uint16_t halfFrom(float value) {
  if (std::isnan(value)) return 0x7E00;
  const int sign = std::signbit(value) ? 0x8000 : 0;
  const float size = std::fabs(value);
  int exponent = -13;
  if (size > 0) std::frexp(size, &exponent);
  const int step = std::max(exponent, -13) - 11;  // a half has 11 bits, the smallest of them 2^-24
  const int units = static_cast<int>(std::nearbyint(std::ldexp(size, -step)));
  return static_cast<std::uint16_t>(sign | (((step + 24) << 10) + units));
}

float floatFrom(std::uint16_t half) {
  const float sign = (half & 0x8000) != 0 ? -1.0F : 1.0F;
  const int exponent = half >> 10 & 31;
  const auto mantissa = static_cast<float>(half & 1023);
  if (exponent == 31) return mantissa > 0 ? NAN : sign * INFINITY;
  return sign * (exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(mantissa + 1024, exponent - 25));
}

}  // namespace

std::vector<std::byte> readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> chars{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const auto bytes = std::as_bytes(std::span(chars));
  return {bytes.begin(), bytes.end()};
}

std::vector<float> readFloats(const gpu::Texture& texture) {
  std::vector<std::uint16_t> halves(texture.byteCount() / 2);
  texture.read(std::as_writable_bytes(std::span(halves)));
  std::vector<float> floats(halves.size());
  std::transform(halves.begin(), halves.end(), floats.begin(), floatFrom);
  return floats;
}

void writeFloats(gpu::Texture& texture, const std::vector<float>& values) {
  std::vector<std::uint16_t> halves(values.size());
  std::transform(values.begin(), values.end(), halves.begin(), halfFrom);
  texture.write(std::as_bytes(std::span(halves)));
}

}  // namespace veloria::tests
