#include "ContrastWorker.h"

#include <optional>
#include <utility>

#include "platform/linux/bus/BusCall.h"
#include "platform/posix/process/CommandOutput.h"

namespace veloria {

namespace {

constexpr double commandSeconds = 2;
constexpr std::size_t commandBytes = 100;

const auto common = QStringLiteral("org.freedesktop.appearance");
const auto gnome = QStringLiteral("org.gnome.desktop.a11y.interface");

/// Nothing: the portal doesn't run or knows no such setting.
std::optional<bool> contrastIn(const PortalSettings::Values& settings) {
  const QVariant level = settings.value(common).value(QStringLiteral("contrast"));
  const auto high = asBool(settings.value(gnome).value(QStringLiteral("high-contrast")));
  const bool levelKnown = level.typeId() == QMetaType::UInt;
  if (!levelKnown && !high) return std::nullopt;
  return (levelKnown && level.toUInt() == 1) || high.value_or(false);
}

/// For GNOME without its portal.
bool gsettingsWantContrast() {
  return commandOutput({"gsettings", "get", "org.gnome.desktop.a11y.interface", "high-contrast"}, commandSeconds,
                       commandBytes) == "true\n";
}

}  // namespace

ContrastWorker::ContrastWorker(std::string sessionBus, std::function<void(bool)> report)
    : sessionBus_(std::move(sessionBus)), report_(std::move(report)) {}

void ContrastWorker::look() {
  if (portal_) return portal_->read();
  if (!link_ && !sessionBus_.empty()) {
    const auto follow = [this](const QDBusConnection& bus) {
      auto portal = std::make_unique<PortalSettings>(bus, QStringList{common, gnome},
                                                     [this](const auto& settings) { take(settings); });
      portal_ = portal.get();
      BusLink::Followers followers;
      followers.push_back(std::move(portal));
      return followers;
    };
    link_ = std::make_unique<BusLink>(sessionBus_, 0, BusLink::Handlers{follow, [this] { portal_ = nullptr; }});
  }
  if (link_) link_->open();
  if (!portal_) take({});
}

void ContrastWorker::stop() {
  link_.reset();
  portal_ = nullptr;
}

void ContrastWorker::take(const PortalSettings::Values& settings) {
  const auto increased = contrastIn(settings);
  report_(increased ? *increased : gsettingsWantContrast());
}

}  // namespace veloria
