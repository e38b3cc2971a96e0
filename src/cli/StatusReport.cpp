#include "cli/StatusReport.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "agent/StateMembers.h"
#include "base/Text.h"
#include "cli/Operands.h"

namespace veloria::cli {

namespace {

using nlohmann::json;
using Values = std::map<std::string, double, std::less<>>;

constexpr std::size_t mostColors = 4;

Values channelsOf(const json& state, double now) {
  Values channels;
  for (const auto& [name, member] : state.items()) {
    const auto value = channelValue(member);
    if (value && !reservedMeaning(name)) channels[name] = *value;
  }
  for (const auto& [name, value] : mergedSessions(agentSessions(state), now)) {
    if (!reservedMeaning(name)) channels[name] = value;
  }
  return channels;
}

std::vector<std::string> paletteOf(const json& state) {
  std::vector<std::string> colors;
  const auto palette = state.find(paletteKey);
  if (palette == state.end() || !palette->is_array()) return colors;
  for (const auto& entry : *palette) {
    if (!entry.is_string()) return {};  // as in the application
    const auto color = normalizedColor(entry.get_ref<const std::string&>());
    if (color && colors.size() < mostColors) colors.push_back(*color);
  }
  return colors.size() < 2 ? std::vector<std::string>() : colors;
}

double alertLeftIn(const json& state, double now) {
  const auto until = state.find(alertUntilKey);
  const auto value = until == state.end() ? std::nullopt : channelValue(*until);
  return std::max(0.0, value.value_or(0) - now);
}

std::string numberText(const char* format, double value) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), format, value);
  return text.data();
}

std::string valuesText(const Values& values) {
  std::string text;
  for (const auto& [name, value] : values) {
    if (value != 0) text += (text.empty() ? "" : ", ") + printable(name) + " " + numberText("%.6g", value);
  }
  return text.empty() ? "nothing" : text;
}

std::string sessionText(const std::string& name, const AgentSession& session, double now) {
  std::string text = "session " + printable(name) + ": " + valuesText(session.values);
  if (session.expires) text += " (" + numberText("%.0f", std::ceil(*session.expires - now)) + " s left)";
  return text + "\n";
}

}  // namespace

StatusReport statusReport(const json& state, bool running, double now) {
  StatusReport report;
  report.channels = channelsOf(state, now);
  report.sessions = agentSessions(state);
  std::erase_if(report.sessions, [&](const auto& entry) { return entry.second.expires.value_or(now + 1) <= now; });
  report.palette = paletteOf(state);
  report.alertLeft = alertLeftIn(state, now);
  report.running = running;
  return report;
}

std::string textOf(const StatusReport& report, double now) {
  std::string text = "channels: " + valuesText(report.channels) + "\n";
  for (const auto& [name, session] : report.sessions) text += sessionText(name, session, now);
  if (!report.palette.empty()) {
    text += "palette:";
    for (const auto& color : report.palette) text += " " + color;
    text += "\n";
  }
  if (report.alertLeft > 0) text += "flash: " + numberText("%.1f", report.alertLeft) + " s left\n";
  return text + (report.running ? "Veloria is running\n" : "Veloria is not running\n");
}

nlohmann::ordered_json jsonOf(const StatusReport& report, double now) {
  nlohmann::ordered_json result;
  result["channels"] = report.channels;
  result["sessions"] = nlohmann::ordered_json::object();
  for (const auto& [name, session] : report.sessions) {
    auto& entry = result["sessions"][name];
    entry["channels"] = session.values;
    entry["remaining"] = nullptr;
    if (session.expires) entry["remaining"] = *session.expires - now;
  }
  result["palette"] = nullptr;
  if (!report.palette.empty()) result["palette"] = report.palette;
  result["running"] = report.running;
  return result;
}

}  // namespace veloria::cli
