#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// A fuzz target includes this once and defines fuzz().
namespace veloria {

/// Reads any bytes; aborts if what comes of them breaks a rule.
void fuzz(std::string_view bytes);

inline void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace veloria

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  veloria::fuzz({reinterpret_cast<const char*>(data), size});
  return 0;
}
