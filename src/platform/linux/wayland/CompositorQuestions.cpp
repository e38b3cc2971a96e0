#include "platform/linux/wayland/CompositorQuestions.h"

#include <filesystem>
#include <string>
#include <utility>

#include "base/Log.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "platform/linux/hyprland/CursorPosition.h"
#include "platform/posix/socket/LocalStream.h"

namespace veloria {

namespace {

constexpr double patience = 0.25;
constexpr std::uint32_t getWorkspaces = 1;
constexpr std::uint32_t getOutputs = 3;
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

Result<ReservedEdges> hyprlandEdges(const std::filesystem::path& path) {
  auto stream = LocalStream::connect(path, mediaTime() + patience);
  if (!stream) return Failure{stream.error()};
  const auto sent = stream->send("j/monitors");
  if (!sent) return Failure{sent.error()};
  const auto answer = stream->receiveAll(maximumJsonBytes);
  return answer ? hyprlandReservedEdges(*answer) : Failure{answer.error()};
}

Result<LayerStacking> swayStacking(const std::filesystem::path& path) {
  auto stream = LocalStream::connect(path, mediaTime() + patience);
  if (!stream) return Failure{stream.error()};
  const auto version = askSway(*stream, getVersion);
  return version ? swayLayerStacking(*version) : Failure{version.error()};
}

std::optional<ReservedEdges> reported(const Result<ReservedEdges>& edges) {
  if (edges) return *edges;
  NimbraLog::debug("no word on panels from the compositor: " + edges.error());
  return std::nullopt;
}

}  // namespace

std::optional<std::string> CompositorQuestions::swaySocket() const {
  auto path = environment_("SWAYSOCK");
  return path && !path->empty() ? path : std::nullopt;
}

LayerStacking CompositorQuestions::layerStacking() const {
  const auto path = swaySocket();
  if (!path) return LayerStacking::newestHighest;
  const auto stacking = swayStacking(*path);
  return stacking ? *stacking : LayerStacking::newestHighest;
}

std::optional<ReservedEdges> CompositorQuestions::reservedEdges() const {
  if (const auto path = swaySocket()) return reported(swayEdges(*path));
  const auto path = hyprlandRequestSocket(environment_);
  return path ? reported(hyprlandEdges(*path)) : std::nullopt;
}

}  // namespace veloria
