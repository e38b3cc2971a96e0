// Stored settings and single values of the command line, from any bytes. What is accepted must be written again and
// read back as the same record; what is refused must leave no trace.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "settings/SettingsCodec.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void decode(std::string_view bytes) {
  const auto config = veloria::decodeSettings(bytes);
  if (!config) return require(!config.error().empty() && config.error().size() < 1000);
  const auto encoded = veloria::encodeSettings(*config);
  constexpr std::size_t alwaysFits = 100'000;  // indented, a record can grow to several times its size
  if (!encoded) return require(bytes.size() > alwaysFits);
  const auto again = veloria::decodeSettings(*encoded);
  require(again && *again == *config);
  const auto& palette = config->palette();
  require(palette.stops.size() >= 4);
}

/// "key=json", as in a command line.
void set(std::string_view bytes) {
  const std::size_t equals = bytes.find('=');
  if (equals == bytes.npos) return;
  veloria::NimbraConfig config;
  const auto done = veloria::setField(config, bytes.substr(0, equals), bytes.substr(equals + 1));
  if (done) {
    require(veloria::encodeSettings(config).has_value() || bytes.size() > 100'000);
  } else {
    require(config == veloria::NimbraConfig());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  decode(bytes);
  set(bytes);
  return 0;
}
