// Stored settings and single values of the command line, from any bytes. What is accepted must be written again and
// read back as the same record; what is refused must leave no trace.

#include "FuzzTarget.h"
#include "settings/SettingsCodec.h"

namespace veloria {
namespace {

constexpr std::size_t alwaysFits = 100'000;  // indented, a record can grow to several times its size

void decode(std::string_view bytes) {
  const auto config = decodeSettings(bytes);
  if (!config) return require(!config.error().empty() && config.error().size() < 1000);
  const auto encoded = encodeSettings(*config);
  if (!encoded) return require(bytes.size() > alwaysFits);
  const auto again = decodeSettings(*encoded);
  require(again && *again == *config);
  require(config->palette().stops.size() >= 4);
}

/// "key=json", as in a command line.
void set(std::string_view bytes) {
  const std::size_t equals = bytes.find('=');
  if (equals == bytes.npos) return;
  NimbraConfig config;
  const auto done = setField(config, bytes.substr(0, equals), bytes.substr(equals + 1));
  require(done ? encodeSettings(config) || bytes.size() > alwaysFits : config == NimbraConfig());
}

}  // namespace

void fuzz(std::string_view bytes) {
  decode(bytes);
  set(bytes);
}

}  // namespace veloria
