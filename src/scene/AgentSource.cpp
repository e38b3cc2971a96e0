#include "scene/AgentSource.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "agent/StateMembers.h"
#include "base/Files.h"
#include "base/StrictJson.h"

namespace veloria {

namespace {

using Json = nlohmann::json;

constexpr double shortestFlash = 0.1;

std::optional<double> number(const Json& state, const char* key) {
  const auto found = state.find(key);
  if (found == state.end() || !found->is_number()) return std::nullopt;
  return found->get<double>();
}

ChannelValues channelsOf(const Json& state) {
  ChannelValues channels;
  for (const auto& [key, value] : state.items()) {
    if (const auto channel = channelValue(value)) channels[key] = *channel;
  }
  return channels;
}

std::optional<FourStops> paletteOf(const Json& state, const char* key) {
  const auto found = state.find(key);
  if (found == state.end() || !found->is_array()) return std::nullopt;
  std::vector<ColorStop> colors;
  for (const Json& entry : *found) {
    if (!entry.is_string()) return std::nullopt;
    if (const auto color = colorFromHex(entry.get_ref<const std::string&>())) colors.push_back(*color);
  }
  return fourStops(colors);
}

std::span<const ColorStop> stopsOf(const std::optional<FourStops>& palette) {
  return palette ? std::span<const ColorStop>(*palette) : std::span<const ColorStop>();
}

}  // namespace

std::optional<AgentState> readAgentState(std::string_view bytes) {
  const auto json = parseStrictJson(bytes);
  if (!json || !json->is_object()) return std::nullopt;
  AgentState state;
  state.channels = channelsOf(*json);
  state.palette = paletteOf(*json, paletteKey);
  state.alertUntil = number(*json, alertUntilKey).value_or(0);
  state.alertFor = std::max(shortestFlash, number(*json, alertForKey).value_or(alertSeconds));
  state.alertPalette = paletteOf(*json, alertPaletteKey);
  state.sessions = agentSessions(*json);
  return state;
}

AgentSource::AgentSource(std::filesystem::path file) : file_(std::move(file)) {}

void AgentSource::poll(double now) {
  const auto version = currentVersion();
  if (version && version != lastModified_) {
    lastModified_ = version;  // before reading: an unreadable file is not tried again until it changes
    read();
  }
  letLapse(now);
}

std::optional<AgentSource::Version> AgentSource::currentVersion() const {
  struct stat attributes {};
  if (file_.empty() || ::stat(file_.c_str(), &attributes) != 0) return std::nullopt;
  const timespec modified = modificationTime(attributes);
  return Version{modified.tv_sec, modified.tv_nsec, attributes.st_ino, attributes.st_size};
}

void AgentSource::read() {
  const auto bytes = readFileBounded(file_, maximumJsonBytes);
  if (!bytes) return;
  auto state = readAgentState(*bytes);
  if (!state) return;
  state_ = *std::move(state);
  nextExpiry_ = nextExpiry(state_.sessions, -std::numeric_limits<double>::infinity());
}

/// The file holds the merged values as of its last write. After a session has expired they are merged again here.
void AgentSource::letLapse(double now) {
  if (!nextExpiry_ || *nextExpiry_ > now) return;
  for (const auto& [name, value] : mergedSessions(state_.sessions, now)) state_.channels[name] = value;
  nextExpiry_ = nextExpiry(state_.sessions, now);
}

std::span<const ColorStop> AgentSource::paletteOverride() const {
  return stopsOf(state_.palette);
}

std::span<const ColorStop> AgentSource::alertPalette() const {
  return stopsOf(state_.alertPalette);
}

}  // namespace veloria
