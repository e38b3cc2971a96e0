#include "platform/linux/wayland/CompositorQuestions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "base/LocalStream.h"
#include "base/Log.h"
#include "base/MediaClock.h"
#include "base/StrictJson.h"
#include "platform/linux/hyprland/HyprlandPointer.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr std::string_view magic = "i3-ipc";
constexpr double largest = 65535;
constexpr const char* notAsExpected = "the compositor's answer is not as expected";

std::optional<int> wholeNumber(const json& value) {
  if (!value.is_number()) return std::nullopt;
  const double number = value.get<double>();
  return number >= -largest && number <= largest ? std::optional(static_cast<int>(number)) : std::nullopt;
}

const json* member(const json& object, const char* key) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

std::optional<std::string> text(const json& object, const char* key) {
  const json* value = member(object, key);
  return value != nullptr && value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

std::optional<int> numberOf(const json& object, const char* key) {
  const json* value = member(object, key);
  return value != nullptr ? wholeNumber(*value) : std::nullopt;
}

std::optional<PixelRect> rectOf(const json& object) {
  const json* rect = member(object, "rect");
  if (rect == nullptr) return std::nullopt;
  std::array<int, 4> numbers{};
  constexpr std::array<const char*, 4> keys{"x", "y", "width", "height"};
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto number = numberOf(*rect, keys[i]);
    if (!number) return std::nullopt;
    numbers[i] = *number;
  }
  return PixelRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

bool isTrue(const json& object, const char* key) {
  const json* value = member(object, key);
  return value != nullptr && value->is_boolean() && value->get<bool>();
}

EdgeInsets insetsOf(const PixelRect& outer, const PixelRect& inner) {
  const EdgeInsets all{inner.x - outer.x, inner.y - outer.y, outer.right() - inner.right(),
                       outer.bottom() - inner.bottom()};
  const int gap = std::max(0, std::min({all.left, all.right, all.top, all.bottom}));
  return {std::max(0, all.left - gap), std::max(0, all.top - gap), std::max(0, all.right - gap),
          std::max(0, all.bottom - gap)};
}

std::map<std::string, PixelRect> outputRects(const json& outputs) {
  std::map<std::string, PixelRect> rects;
  for (const json& output : outputs) {
    const auto name = text(output, "name");
    const auto rect = rectOf(output);
    if (name && rect) rects.emplace(*name, *rect);
  }
  return rects;
}

std::optional<EdgeInsets> hyprlandInsets(const json& monitor) {
  const json* reserved = member(monitor, "reserved");
  if (reserved == nullptr || !reserved->is_array() || reserved->size() != 4) return std::nullopt;
  std::array<int, 4> edges{};
  for (std::size_t i = 0; i < edges.size(); ++i) {
    const auto number = wholeNumber((*reserved)[i]);
    if (!number) return std::nullopt;
    edges[i] = std::max(0, *number);
  }
  return EdgeInsets{edges[0], edges[1], edges[2], edges[3]};
}

int* edgeOf(EdgeInsets& edges, std::string_view location) {
  if (location == "left") return &edges.left;
  if (location == "top") return &edges.top;
  if (location == "right") return &edges.right;
  return location == "bottom" ? &edges.bottom : nullptr;
}

/// What a container of sway's fills: nothing but its place, its output, or all outputs.
enum class Filled { place, output, everything };

template <typename Visit>
void forEachChild(const json& node, Visit visit) {
  for (const char* kind : {"nodes", "floating_nodes"}) {
    const json* children = member(node, kind);
    if (children == nullptr || !children->is_array()) continue;
    for (const json& child : *children) visit(child);
  }
}

/// Windows say whether they are visible, the containers around them don't.
bool showsAWindow(const json& node) {
  bool shows = isTrue(node, "visible");
  forEachChild(node, [&](const json& child) { shows = shows || showsAWindow(child); });
  return shows;
}

/// The most that anything seen in `node` fills. Workspaces have a mode as well, which means nothing.
Filled filledBy(const json& node) {
  const int mode = text(node, "type") == "workspace" ? 0 : numberOf(node, "fullscreen_mode").value_or(0);
  Filled filled = Filled::place;
  if (mode != 0 && showsAWindow(node)) filled = mode == 2 ? Filled::everything : Filled::output;
  forEachChild(node, [&](const json& child) { filled = std::max(filled, filledBy(child)); });
  return filled;
}

std::optional<int> workspaceId(const json& object, const char* key) {
  const json* workspace = member(object, key);
  return workspace != nullptr ? numberOf(*workspace, "id") : std::nullopt;
}

/// Hyprland says true with a mode of its own (0: full, 1: maximised) before version 0.42, and since then a number in
/// which 1 is maximised and 2 is full.
bool isFullScreen(const json& client) {
  const bool full = isTrue(client, "fullscreen") ? numberOf(client, "fullscreenMode").value_or(0) == 0
                                                 : numberOf(client, "fullscreen").value_or(0) >= 2;
  return full && !isTrue(client, "hidden");
}

}  // namespace

std::string swayMessage(std::uint32_t type, std::string_view payload) {
  std::string message(magic);
  const std::array<std::uint32_t, 2> numbers{static_cast<std::uint32_t>(payload.size()), type};
  message.append(reinterpret_cast<const char*>(numbers.data()), sizeof(numbers));
  message += payload;
  return message;
}

std::optional<std::size_t> swayPayloadLength(std::string_view header, std::uint32_t type) {
  std::array<std::uint32_t, 2> numbers{};
  if (header.size() < swayHeaderBytes || !header.starts_with(magic)) return std::nullopt;
  std::memcpy(numbers.data(), header.data() + magic.size(), sizeof(numbers));
  if (numbers[0] > maximumJsonBytes || numbers[1] != type) return std::nullopt;
  return numbers[0];
}

Result<ReservedEdges> swayReservedEdges(std::string_view outputs, std::string_view workspaces) {
  const auto outputList = parseStrictJson(outputs);
  const auto workspaceList = parseStrictJson(workspaces);
  if (!outputList || !workspaceList || !outputList->is_array() || !workspaceList->is_array()) {
    return Failure{notAsExpected};
  }
  const auto rects = outputRects(*outputList);
  ReservedEdges edges;
  for (const json& workspace : *workspaceList) {
    const auto output = text(workspace, "output");
    const auto inner = rectOf(workspace);
    if (!isTrue(workspace, "visible") || !output || !inner || !rects.contains(*output)) continue;
    edges.emplace(*output, insetsOf(rects.at(*output), *inner));
  }
  return edges;
}

Result<LayerStacking> swayLayerStacking(std::string_view version) {
  const auto reply = parseStrictJson(version);
  if (!reply) return Failure{notAsExpected};
  const auto first = numberOf(*reply, "major");
  const auto second = numberOf(*reply, "minor");
  if (!first || !second) return Failure{notAsExpected};
  return std::pair(*first, *second) < std::pair(1, 10) ? LayerStacking::newestLowest : LayerStacking::newestHighest;
}

Result<ReservedEdges> hyprlandReservedEdges(std::string_view monitors) {
  const auto list = parseStrictJson(monitors);
  if (!list || !list->is_array()) return Failure{notAsExpected};
  ReservedEdges edges;
  for (const json& monitor : *list) {
    const auto name = text(monitor, "name");
    const auto insets = hyprlandInsets(monitor);
    if (name && insets) edges.emplace(*name, *insets);
  }
  return edges;
}

Result<ReservedEdges> plasmaReservedEdges(std::string_view answer, std::span<const MonitorDescription> monitors) {
  const auto panels = parseStrictJson(answer);
  if (!panels || !panels->is_array()) return Failure{notAsExpected};
  ReservedEdges edges;
  for (const MonitorDescription& monitor : monitors) edges[monitor.name];
  for (const json& panel : *panels) {
    if (text(panel, "hiding") != "none") continue;
    const PixelRect screen{numberOf(panel, "x").value_or(0), numberOf(panel, "y").value_or(0),
                           numberOf(panel, "width").value_or(0), numberOf(panel, "height").value_or(0)};
    const auto monitor = std::find_if(monitors.begin(), monitors.end(),
                                      [&](const MonitorDescription& each) { return each.frame == screen; });
    if (monitor == monitors.end()) continue;
    int* edge = edgeOf(edges[monitor->name], text(panel, "location").value_or(""));
    if (edge != nullptr) *edge = std::max(*edge, numberOf(panel, "thickness").value_or(0));
  }
  return edges;
}

Result<CoveredOutputs> swayCoveredOutputs(std::string_view tree) {
  const auto root = parseStrictJson(tree);
  if (!root || text(*root, "type") != "root") return Failure{notAsExpected};
  CoveredOutputs all;
  CoveredOutputs covered;
  bool everything = false;
  forEachChild(*root, [&](const json& output) {
    const auto name = text(output, "name");
    if (!name) return;
    const Filled filled = filledBy(output);
    all.insert(*name);
    if (filled != Filled::place) covered.insert(*name);
    everything = everything || filled == Filled::everything;
  });
  return everything ? all : covered;
}

Result<CoveredOutputs> hyprlandCoveredOutputs(std::string_view monitors, std::string_view clients) {
  const auto monitorList = parseStrictJson(monitors);
  const auto clientList = parseStrictJson(clients);
  if (!monitorList || !clientList || !monitorList->is_array() || !clientList->is_array()) {
    return Failure{notAsExpected};
  }
  std::set<int> full;
  for (const json& client : *clientList) {
    const auto workspace = workspaceId(client, "workspace");
    if (workspace && isFullScreen(client)) full.insert(*workspace);
  }
  CoveredOutputs covered;
  for (const json& monitor : *monitorList) {
    const auto name = text(monitor, "name");
    const auto shown = workspaceId(monitor, "activeWorkspace");
    const auto over = workspaceId(monitor, "specialWorkspace");
    if (name && ((shown && full.contains(*shown)) || (over && full.contains(*over)))) covered.insert(*name);
  }
  return covered;
}

PixelRect withoutReserved(const PixelRect& frame, const EdgeInsets& reserved) {
  const auto kept = [](int edge, int length) { return edge > 0 && edge <= length / 2 ? edge : 0; };
  const int left = kept(reserved.left, frame.width);
  const int top = kept(reserved.top, frame.height);
  return {frame.x + left, frame.y + top, frame.width - left - kept(reserved.right, frame.width),
          frame.height - top - kept(reserved.bottom, frame.height)};
}

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
  if (!length) return Failure{"the answer does not fit the question, or is too long"};
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
