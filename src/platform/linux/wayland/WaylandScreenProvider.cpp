#include "platform/linux/wayland/WaylandScreenProvider.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"

namespace veloria {

namespace {

constexpr std::size_t mostOutputs = 64;
constexpr std::uint32_t allEdges = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
                                   ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

bool described(const OutputFacts& facts) {
  return facts != OutputFacts{};
}

void reportImplausible(const OutputFacts& facts) {
  const Extent size = facts.logicalSize.value_or(Extent{});
  systemLog("Veloria: the output " + facts.name + " is left out: it can't be at " + std::to_string(facts.x) + ", " +
            std::to_string(facts.y) + " with " + std::to_string(static_cast<long>(size.width)) + " x " +
            std::to_string(static_cast<long>(size.height)) + " points.");
}

using Subscribers = std::vector<std::weak_ptr<std::function<void()>>>;

std::shared_ptr<void> subscribe(Subscribers& list, std::function<void()> handler) {
  auto subscriber = std::make_shared<std::function<void()>>(std::move(handler));
  std::erase_if(list, [](const auto& entry) { return entry.expired(); });
  list.push_back(subscriber);
  return subscriber;
}

// Handlers may subscribe and end subscriptions while they run.
void callAll(const Subscribers& list) {
  const Subscribers current = list;  // NOLINT(performance-unnecessary-copy-initialization)
  for (const auto& entry : current) {
    if (const auto subscriber = entry.lock()) (*subscriber)();
  }
}

}  // namespace

WaylandScreenProvider::WaylandScreenProvider(WaylandConnection& connection, ReservedEdgesQuery reserved,
                                             const ScreenOverrides& overrides)
    : connection_(connection),
      reserved_(std::move(reserved)),
      overrides_(overrides),
      settling_(connection.timers(), [this] { changesSettled(); }) {
  changes_ = connection_.onOutputsChange([this] { outputsChanged(); });
  refresh();
  watchSpace();
}

void WaylandScreenProvider::setChangeHandler(std::function<void()> handler) {
  changed_ = std::make_shared<std::function<void()>>(std::move(handler));
}

std::shared_ptr<WaylandOutput> WaylandScreenProvider::output(std::uint32_t number) const {
  const auto found = outputs_.find(number);
  return found == outputs_.end() ? nullptr : found->second.lock();
}

std::shared_ptr<void> WaylandScreenProvider::onRefresh(std::function<void()> handler) {
  return subscribe(refreshSubscribers_, std::move(handler));
}

std::shared_ptr<void> WaylandScreenProvider::onPanelsMoved(std::function<void()> handler) {
  return subscribe(panelSubscribers_, std::move(handler));
}

void WaylandScreenProvider::outputsChanged() {
  watchSpace();
  settling_.note();
}

// A surface that never gets a picture, beside what panels reserve: the compositor tells its size again whenever that
// changes. No protocol tells more.
void WaylandScreenProvider::watchSpace() {
  const auto& outputs = connection_.outputs();
  std::erase_if(spaces_, [&](const auto& entry) {
    return std::none_of(outputs.begin(), outputs.end(),
                        [&](const auto& output) { return output->global() == entry.first; });
  });
  if (connection_.layerShell() == nullptr) return;
  for (const auto& output : outputs) {
    const std::uint32_t global = output->global();
    Space& space = spaces_[global];
    if (space.surface || !described(output->facts())) continue;
    space.surface = std::make_unique<LayerSurface>(
        connection_, output->raw(), LayerPlacement{.anchors = allEdges},
        LayerSurface::Handlers{
            [this, global](std::uint32_t width, std::uint32_t height) { spaceConfigured(global, width, height); },
            [this, global] { spaces_.erase(global); }});
  }
}

// The same size comes again for all sorts of reasons, our own surfaces among them.
void WaylandScreenProvider::spaceConfigured(std::uint32_t global, std::uint32_t width, std::uint32_t height) {
  Space& space = spaces_[global];
  if (space.size == std::pair(width, height)) return;
  space.size = {width, height};
  panelsMoved_ = true;
  settling_.note();
}

void WaylandScreenProvider::changesSettled() {
  const auto before = screens_;
  refresh();
  const auto handler = changed_;
  if (screens_ != before && *handler) (*handler)();
}

std::vector<WaylandScreenProvider::Found> WaylandScreenProvider::plausibleOutputs() const {
  std::vector<Found> found;
  for (const auto& output : connection_.outputs()) {
    if (!described(output->facts()) || found.size() == mostOutputs) continue;
    auto monitor = monitorOf(output->facts());
    if (!monitor) {
      reportImplausible(output->facts());
      continue;
    }
    const bool mirror = std::any_of(found.begin(), found.end(),
                                    [&](const Found& other) { return other.monitor.frame == monitor->frame; });
    if (!mirror) found.push_back({output, *std::move(monitor)});
  }
  const auto primary = std::find_if(found.begin(), found.end(), [](const Found& each) {
    return each.monitor.frame.x == 0 && each.monitor.frame.y == 0;
  });
  if (primary != found.end()) std::rotate(found.begin(), primary, primary + 1);
  return found;
}

void WaylandScreenProvider::refresh() {
  if (connection_.isBroken()) return;  // what was last known stays
  const auto found = plausibleOutputs();
  std::vector<MonitorDescription> monitors;
  for (const Found& each : found) monitors.push_back(each.monitor);
  const auto reserved = found.empty() ? std::nullopt : reserved_(monitors);
  if (!found.empty()) panelsTold_ = reserved.has_value() || overrides_.barHeight.has_value();
  for (MonitorDescription& monitor : monitors) {
    if (!reserved || !reserved->contains(monitor.name)) continue;
    monitor.visible = withoutReserved(monitor.frame, reserved->at(monitor.name));
  }
  screens_ = describeScreens(monitors, 1, overrides_);
  if (!monitors.empty()) space_ = spaceOf(monitors, 1);
  outputs_.clear();
  for (std::size_t i = 0; i < found.size(); ++i) {
    screens_[i].backingScale = pixelsPerPoint(found[i].output->facts(), connection_.viewporter() != nullptr);
    outputs_[screens_[i].number] = found[i].output;
  }
  callAll(refreshSubscribers_);
  if (std::exchange(panelsMoved_, false)) callAll(panelSubscribers_);
}

}  // namespace veloria
