// The agent state file from any bytes: whatever it holds, every change must leave a file that can be read again, in
// which no session can reach the file's own members, and a status that a terminal can show.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

#include "base/StrictJson.h"
#include "cli/StateChanges.h"
#include "cli/StatusReport.h"

namespace {

using nlohmann::json;
using namespace veloria::cli;

constexpr double now = 1'700'000'000;

void require(bool condition) {
  if (!condition) std::abort();
}

const std::array<std::function<void(json&)>, 9>& changes() {
  static const std::array<std::function<void(json&)>, 9> all{
      [](json& state) {
        reportActivity(state, Activity::busy, {"build", 60}, now);
      },
      [](json& state) { reportActivity(state, Activity::fail, {}, now); },
      [](json& state) { setChannel(state, "a0", 0.5, std::nullopt, now); },
      [](json& state) {
        setChannel(state, "busy", -0.5, SessionChoice{lifetimeSession("busy"), 5}, now);
      },
      [](json& state) { unsetChannel(state, "busy", now); },
      [](json& state) {
        setPalette(state, {"#000000", "#ffffff"}, now);
      },
      [](json& state) { clearPalette(state, now); },
      [](json& state) { finishRun(state, "build", Activity::ok, "default", now); },
      [](json& state) { clearState(state, now); },
  };
  return all;
}

void report(const json& state) {
  const StatusReport status = statusReport(state, false, now);
  for (const char c : textOf(status, now)) require(c == '\n' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f));
  const std::string bytes = jsonOf(status, now).dump();
  require(veloria::parseStrictJson(bytes) || bytes.size() > veloria::maximumJsonBytes);
}

void apply(const json& before, const std::function<void(json&)>& change) {
  json state = before;
  change(state);
  require(state.is_object());
  for (const auto& [name, member] : before.items()) {
    require(state.contains(name) || name == "sessions" || name == "palette" || name.starts_with("alert_"));
  }
  const std::string bytes = state.dump();
  const auto again = veloria::parseStrictJson(bytes);
  require((again && *again == state) || bytes.size() > veloria::maximumJsonBytes);
  report(state);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto state = veloria::parseStrictJson({reinterpret_cast<const char*>(data), size});
  if (!state || !state->is_object()) return 0;
  report(*state);
  for (const auto& change : changes()) apply(*state, change);
  return 0;
}
