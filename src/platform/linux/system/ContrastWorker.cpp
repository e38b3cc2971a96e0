#include "ContrastWorker.h"

#include <utility>

#include "PortalContrast.h"
#include "platform/posix/process/CommandOutput.h"

namespace veloria {

namespace {

constexpr double commandSeconds = 2;
constexpr std::size_t commandBytes = 100;

/// For GNOME without its portal.
bool gsettingsWantContrast() {
  return commandOutput({"gsettings", "get", "org.gnome.desktop.a11y.interface", "high-contrast"}, commandSeconds,
                       commandBytes) == "true\n";
}

}  // namespace

ContrastWorker::ContrastWorker(std::string sessionBus, std::function<void(bool)> report)
    : sessionBus_(std::move(sessionBus)), report_(std::move(report)) {}

ContrastWorker::~ContrastWorker() = default;

void ContrastWorker::look() {
  if (portal_) return portal_->read();
  if (!link_ && !sessionBus_.empty()) {
    link_ = std::make_unique<BusLink>(sessionBus_, 0,
                                      BusLink::Handlers{[this](const QDBusConnection& bus) {
                                                          BusLink::Followers followers;
                                                          auto portal = std::make_unique<PortalContrast>(
                                                              bus, [this](auto increased) { take(increased); });
                                                          portal_ = portal.get();
                                                          followers.push_back(std::move(portal));
                                                          return followers;
                                                        },
                                                        [this] { portal_ = nullptr; }});
  }
  if (link_) link_->open();
  if (!portal_) take(std::nullopt);
}

void ContrastWorker::stop() {
  link_.reset();
  portal_ = nullptr;
}

void ContrastWorker::take(std::optional<bool> increased) {
  report_(increased ? *increased : gsettingsWantContrast());
}

}  // namespace veloria
