#include "platform/linux/wayland/PlasmaPanels.h"

#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

const auto service = QStringLiteral("org.kde.plasmashell");
const auto script = QStringLiteral(
    "print(JSON.stringify(panels().map(function(p) { var s = screenGeometry(p.screen); return {location: p.location, "
    "hiding: p.hiding, thickness: p.height, x: s.x, y: s.y, width: s.width, height: s.height}; })))");

}  // namespace

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
