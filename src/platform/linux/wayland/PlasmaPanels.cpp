#include "platform/linux/wayland/PlasmaPanels.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/Log.h"
#include "base/StrictJson.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr double largest = 65535;
const auto service = QStringLiteral("org.kde.plasmashell");
const auto script = QStringLiteral(
    "print(JSON.stringify(panels().map(function(p) { var s = screenGeometry(p.screen); return {location: p.location, "
    "hiding: p.hiding, thickness: p.height, x: s.x, y: s.y, width: s.width, height: s.height}; })))");

std::optional<int> numberOf(const json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number()) return std::nullopt;
  const double number = found->get<double>();
  return number >= -largest && number <= largest ? std::optional(static_cast<int>(number)) : std::nullopt;
}

std::string textOf(const json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

int* edgeOf(EdgeInsets& edges, const std::string& location) {
  if (location == "left") return &edges.left;
  if (location == "top") return &edges.top;
  if (location == "right") return &edges.right;
  return location == "bottom" ? &edges.bottom : nullptr;
}

}  // namespace

Result<ReservedEdges> plasmaReservedEdges(std::string_view answer, std::span<const MonitorDescription> monitors) {
  const auto panels = parseStrictJson(answer);
  if (!panels || !panels->is_array()) return Failure{"plasmashell's answer is not as expected"};
  ReservedEdges edges;
  for (const MonitorDescription& monitor : monitors) edges[monitor.name];
  for (const json& panel : *panels) {
    if (!panel.is_object() || textOf(panel, "hiding") != "none") continue;
    const PixelRect screen{numberOf(panel, "x").value_or(0), numberOf(panel, "y").value_or(0),
                           numberOf(panel, "width").value_or(0), numberOf(panel, "height").value_or(0)};
    const auto monitor = std::find_if(monitors.begin(), monitors.end(),
                                      [&](const MonitorDescription& each) { return each.frame == screen; });
    if (monitor == monitors.end()) continue;
    int* edge = edgeOf(edges[monitor->name], textOf(panel, "location"));
    if (edge != nullptr) *edge = std::max(*edge, numberOf(panel, "thickness").value_or(0));
  }
  return edges;
}

PlasmaPanels::PlasmaPanels(QDBusConnection bus, std::function<void()> changed) : changed_(std::move(changed)) {
  const BusMethod method{service, QStringLiteral("/PlasmaShell"), QStringLiteral("org.kde.PlasmaShell"),
                         QStringLiteral("evaluateScript")};
  runs_ = std::make_unique<ServiceRuns>(
      bus, service,
      [this, bus, method] {
        auto reader = std::make_unique<BusReader>(bus, method, QVariantList{script}, std::vector<BusSignalName>{},
                                                  [this](const QDBusMessage& reply) { hear(reply); });
        reader_ = reader.get();
        return reader;
      },
      [this] { forget(); });
}

void PlasmaPanels::read() {
  if (reader_ != nullptr) reader_->read();
}

std::optional<ReservedEdges> PlasmaPanels::reservedEdges(std::span<const MonitorDescription> monitors) const {
  if (!answer_) return std::nullopt;
  auto edges = plasmaReservedEdges(*answer_, monitors);
  if (edges) return *std::move(edges);
  NimbraLog::debug(edges.error());
  return std::nullopt;
}

void PlasmaPanels::hear(const QDBusMessage& reply) {
  std::optional<std::string> answer;
  if (isReply(reply, "s")) answer = reply.arguments().constFirst().toString().toStdString();
  if (std::exchange(answer_, answer) != answer) changed_();
}

void PlasmaPanels::forget() {
  reader_ = nullptr;
  if (std::exchange(answer_, std::nullopt)) changed_();
}

}  // namespace veloria
