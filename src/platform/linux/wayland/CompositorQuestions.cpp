#include "platform/linux/wayland/CompositorQuestions.h"

#include <string>
#include <utility>

#include "base/LocalStream.h"
#include "base/Log.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "platform/linux/hyprland/CursorPosition.h"

namespace veloria {

namespace {

constexpr double patience = 0.25;
constexpr std::uint32_t getWorkspaces = 1;
constexpr std::uint32_t getOutputs = 3;
constexpr std::uint32_t getTree = 4;
constexpr std::uint32_t getVersion = 7;

Result<std::string> askSway(LocalStream& stream, std::uint32_t type) {
  const auto sent = stream.send(swayMessage(type, {}));
  if (!sent) return Failure{sent.error()};
  const auto header = stream.receive(swayHeaderBytes);
  if (!header) return Failure{header.error()};
  const auto length = swayPayloadLength(*header, type);
  if (!length) return Failure{"the answer is no answer to the question, or too long"};
  return stream.receive(*length);
}

Result<ReservedEdges> swayEdges(const std::filesystem::path& path) {
  auto stream = LocalStream::connect(path, mediaTime() + patience);
  if (!stream) return Failure{stream.error()};
  const auto outputs = askSway(*stream, getOutputs);
  if (!outputs) return Failure{outputs.error()};
  const auto workspaces = askSway(*stream, getWorkspaces);
  if (!workspaces) return Failure{workspaces.error()};
  return swayReservedEdges(*outputs, *workspaces);
}

Result<CoveredOutputs> swayCovered(const std::filesystem::path& path) {
  auto stream = LocalStream::connect(path, mediaTime() + patience);
  if (!stream) return Failure{stream.error()};
  const auto tree = askSway(*stream, getTree);
  return tree ? swayCoveredOutputs(*tree) : Failure{tree.error()};
}

Result<LayerStacking> swayStacking(const std::filesystem::path& path) {
  auto stream = LocalStream::connect(path, mediaTime() + patience);
  if (!stream) return Failure{stream.error()};
  const auto version = askSway(*stream, getVersion);
  return version ? swayLayerStacking(*version) : Failure{version.error()};
}

/// One question a connection.
Result<std::string> askHyprland(const std::filesystem::path& path, const char* question, double end) {
  auto stream = LocalStream::connect(path, end);
  if (!stream) return Failure{stream.error()};
  const auto sent = stream->send(question);
  if (!sent) return Failure{sent.error()};
  return stream->receiveAll(maximumJsonBytes);
}

Result<ReservedEdges> hyprlandEdges(const std::filesystem::path& path) {
  const auto monitors = askHyprland(path, "j/monitors", mediaTime() + patience);
  return monitors ? hyprlandReservedEdges(*monitors) : Failure{monitors.error()};
}

Result<CoveredOutputs> hyprlandCovered(const std::filesystem::path& path) {
  const double end = mediaTime() + patience;
  const auto monitors = askHyprland(path, "j/monitors", end);
  if (!monitors) return Failure{monitors.error()};
  const auto clients = askHyprland(path, "j/clients", end);
  return clients ? hyprlandCoveredOutputs(*monitors, *clients) : Failure{clients.error()};
}

template <typename T>
std::optional<T> reported(const char* what, Result<T> answer) {
  if (answer) return *std::move(answer);
  NimbraLog::debug(std::string("no word on ") + what + " from the compositor: " + answer.error());
  return std::nullopt;
}

}  // namespace

CompositorQuestions::CompositorQuestions(const Environment& environment)
    : hyprland_(hyprlandRequestSocket(environment)) {
  if (const auto path = environment("SWAYSOCK"); path && !path->empty()) sway_ = *path;
}

LayerStacking CompositorQuestions::layerStacking() const {
  const auto stacking = sway_ ? swayStacking(*sway_) : LayerStacking::newestHighest;
  return stacking ? *stacking : LayerStacking::newestHighest;
}

std::optional<ReservedEdges> CompositorQuestions::reservedEdges() const {
  if (sway_) return reported("panels", swayEdges(*sway_));
  return hyprland_ ? reported("panels", hyprlandEdges(*hyprland_)) : std::nullopt;
}

std::optional<CoveredOutputs> CompositorQuestions::coveredOutputs() const {
  if (sway_) return reported("full-screen windows", swayCovered(*sway_));
  return hyprland_ ? reported("full-screen windows", hyprlandCovered(*hyprland_)) : std::nullopt;
}

}  // namespace veloria
