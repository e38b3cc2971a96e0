#include "platform/linux/hyprland/CursorPosition.h"

#include <cmath>
#include <string>
#include <system_error>

#include "base/StrictJson.h"

namespace veloria {

namespace {

constexpr double farthest = 1e6;

std::optional<double> coordinate(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number()) return std::nullopt;
  const double value = found->get<double>();
  if (!(std::abs(value) <= farthest)) return std::nullopt;
  return value;
}

}  // namespace

std::optional<Point> cursorPositionFromAnswer(std::string_view answer) {
  const auto json = parseStrictJson(answer);
  if (!json || !json->is_object()) return std::nullopt;
  const auto x = coordinate(*json, "x");
  const auto y = coordinate(*json, "y");
  if (!x || !y) return std::nullopt;
  return Point{*x, *y};
}

std::optional<std::filesystem::path> hyprlandRequestSocket(const Environment& environment) {
  const std::string signature = environment("HYPRLAND_INSTANCE_SIGNATURE").value_or("");
  if (signature.empty() || signature == "." || signature == ".." || signature.find('/') != std::string::npos) {
    return std::nullopt;
  }
  const std::filesystem::path runtime = environment("XDG_RUNTIME_DIR").value_or("");
  const std::filesystem::path rest = std::filesystem::path("hypr") / signature / ".socket.sock";
  std::error_code ignored;
  if (runtime.is_absolute() && std::filesystem::exists(runtime / rest, ignored)) return runtime / rest;
  const std::filesystem::path older = std::filesystem::path("/tmp") / rest;
  if (std::filesystem::exists(older, ignored)) return older;
  return std::nullopt;
}

}  // namespace veloria
