#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QString>
#include <QUuid>
#include <QVariant>
#include <QVariantMap>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusLink.h"
#include "platform/linux/panel/PanelSettings.h"
#include "platform/linux/panel/PanelText.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr int patienceMilliseconds = 3000;
const auto service = QStringLiteral("org.xfce.Xfconf");
const auto channel = QStringLiteral("xfce4-panel");
const auto panels = QStringLiteral("/panels");
constexpr std::string_view styleEnd = "/background-style";
constexpr std::string_view colourEnd = "/background-rgba";
constexpr unsigned solidColour = 1;
constexpr int mostStyles = 10;
constexpr std::size_t colourParts = 4;

/// Null for a value of another type.
json toJson(const QVariant& value) {
  switch (value.typeId()) {
    case QMetaType::Bool:
      return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
      return value.toLongLong();
    case QMetaType::Double:
      return value.toDouble();
    default:
      break;
  }
  if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return nullptr;
  const auto argument = qvariant_cast<QDBusArgument>(value);
  if (argument.currentSignature() != QLatin1String("av")) return nullptr;
  json list = json::array();
  for (const QVariant& part : qdbus_cast<QVariantList>(argument)) list.push_back(toJson(part));
  return list;
}

std::optional<QVariant> colourFrom(const json& value) {
  if (!value.is_array() || value.size() != colourParts) return std::nullopt;
  QVariantList parts;
  for (const json& part : value) {
    if (!part.is_number() || !(part >= 0 && part <= 1)) return std::nullopt;
    parts.push_back(part.get<double>());
  }
  return parts;
}

/// In the type that the panel expects.
std::optional<QVariant> fromJson(const std::string& key, const json& value) {
  if (key.ends_with(colourEnd)) return colourFrom(value);
  const bool valid = key.ends_with(styleEnd) && value.is_number_integer() && value >= 0 && value <= mostStyles;
  return valid ? std::optional<QVariant>(value.get<unsigned>()) : std::nullopt;
}

const char* const textRules = R"(.xfce4-panel {
  color: #fff;
  text-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
  -gtk-icon-shadow: 0 1px 3px rgba(0, 0, 0, 0.85);
}
/* Each step is named, so that no button of a menu or a popover is meant. */
.xfce4-panel > widget > button,
.xfce4-panel > widget > box > button,
.xfce4-panel > widget > widget > button,
.xfce4-panel > widget > widget > box > button,
.xfce4-panel > widget > widget > box > widget > button,
.xfce4-panel > widget > widget > box > box > button,
.xfce4-panel > widget > widget > box > box > widget > button {
  background: none;
  border-color: transparent;
  box-shadow: none;
  color: #fff;
  text-shadow: inherit;
  -gtk-icon-shadow: inherit;
}
.xfce4-panel > widget button:hover,
.xfce4-panel > widget button:checked {
  background: rgba(255, 255, 255, 0.2);
}
.xfce4-panel .popup {
  text-shadow: none;
  -gtk-icon-shadow: none;
}
)";

class XfcePanel final : public PanelSettings {
 public:
  explicit XfcePanel(const Environment& environment)
      : bus_(busAddresses(environment).session), text_(environment, "xfce", textRules) {}
  ~XfcePanel() override { QDBusConnection::disconnectFromBus(name_); }

  Result<std::vector<PanelSetting>> look() override {
    const auto reply = call("GetAllProperties", {channel, panels});
    if (!reply) return Failure{reply.error()};
    const auto properties = propertiesIn(*reply);
    if (!properties) return Failure{"Xfce's settings service gave an answer of another kind."};
    std::vector<PanelSetting> settings;
    const auto add = [&](const std::string& key, json clear) {
      settings.push_back({key, toJson(properties->value(QString::fromStdString(key))), std::move(clear)});
    };
    for (const json& id : toJson(properties->value(panels))) {
      if (!id.is_number_integer()) continue;
      const std::string path = "/panels/panel-" + id.dump();
      add(path + std::string(colourEnd), json::array({0.0, 0.0, 0.0, 0.0}));
      add(path + std::string(styleEnd), solidColour);
    }
    if (settings.empty()) return Failure{"Xfce has no panel."};
    settings.push_back(text_.look());
    return settings;
  }

  Result<Done> write(const std::string& key, const json& value) override {
    if (key == PanelText::key) {
      auto written = text_.write(value);
      return written ? restartPanel() : written;
    }
    const QString property = QString::fromStdString(key);
    const auto typed = fromJson(key, value);
    if (!typed && !value.is_null()) return Failure{"The value to put back for " + key + " is of another kind."};
    const auto reply = typed ? call("SetProperty", {channel, property, QVariant::fromValue(QDBusVariant(*typed))})
                             : call("ResetProperty", {channel, property, false});
    if (!reply) return Failure{reply.error()};
    return Done{};
  }

 private:
  /// One that is not there reads its rules when it starts.
  Result<Done> restartPanel() {
    const QDBusMessage reply =
        ask(QStringLiteral("org.xfce.Panel"), QStringLiteral("/org/xfce/Panel"), "Terminate", {true});
    if (reply.type() == QDBusMessage::ReplyMessage || reply.errorName().endsWith(QLatin1String(".ServiceUnknown"))) {
      return Done{};
    }
    return Failure{"Xfce's panel did not restart: " + printable(reply.errorMessage().simplified().toStdString())};
  }

  Result<QDBusMessage> call(const char* method, const QVariantList& arguments) {
    const QDBusMessage reply = ask(service, QStringLiteral("/org/xfce/Xfconf"), method, arguments);
    if (reply.type() == QDBusMessage::ReplyMessage) return reply;
    return Failure{"Xfce's settings service failed: " + printable(reply.errorMessage().simplified().toStdString())};
  }

  /// The interface has the service's name.
  QDBusMessage ask(const QString& name, const QString& path, const char* method, const QVariantList& arguments) {
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromStdString(bus_), name_);
    auto message = QDBusMessage::createMethodCall(name, path, name, QString::fromLatin1(method));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    QDBusMessage reply = bus.call(message, QDBus::Block, patienceMilliseconds);
    if (reply.type() != QDBusMessage::ReplyMessage) QDBusConnection::disconnectFromBus(name_);
    return reply;
  }

  std::string bus_;
  PanelText text_;
  QString name_ = QStringLiteral("veloria-panel-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
};

}  // namespace

std::unique_ptr<PanelSettings> xfcePanel(const Environment& environment) {
  return std::make_unique<XfcePanel>(environment);
}

}  // namespace veloria
