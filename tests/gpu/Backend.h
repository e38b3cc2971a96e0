#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "gpu/Device.h"

/// What the suites need of a back end, and helpers to say what a test does in few words.
namespace veloria::gpu::test {

struct Backend {
  const char* name;
  bool executes;  ///< runs the functions, rather than only recording that they were asked for
  std::function<std::unique_ptr<Device>()> makeDevice;
  std::function<std::vector<std::byte>()> libraryBytes;
  /// What the back end has complained about since the last call, also while a device was being destroyed.
  std::function<std::string()> complaints;
};

/// The back end that this program tests.
const Backend& backend();

std::vector<std::byte> readFile(const std::string& path);

/// IEEE half precision, for values that it holds exactly and nearly so.
std::uint16_t toHalf(float value);
float fromHalf(std::uint16_t half);

template <typename Value>
std::span<const std::byte> bytesOf(const std::vector<Value>& values) {
  return std::as_bytes(std::span(values));
}

/// All channels of all texels of a half float texture.
std::vector<float> readFloats(const Texture& texture);
void writeFloats(Texture& texture, const std::vector<float>& values);

}  // namespace veloria::gpu::test
