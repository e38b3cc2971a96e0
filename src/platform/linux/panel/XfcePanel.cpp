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

#include "base/PlainNumber.h"
#include "base/Text.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusLink.h"
#include "platform/linux/panel/PanelSettings.h"

namespace veloria {

namespace {

using nlohmann::json;

constexpr int patienceMilliseconds = 3000;
const auto service = QStringLiteral("org.xfce.Xfconf");
const auto channel = QStringLiteral("xfce4-panel");
const auto panels = QStringLiteral("/panels");
const std::string darkMode = "/panels/dark-mode";
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
  if (key.ends_with(styleEnd)) {
    const bool valid = value.is_number_integer() && value >= 0 && value <= mostStyles;
    return valid ? std::optional<QVariant>(value.get<unsigned>()) : std::nullopt;
  }
  return value.is_boolean() ? std::optional<QVariant>(value.get<bool>()) : std::nullopt;
}

enum class Edge { none, top, bottom };

/// From a panel's position, such as "p=6;x=0;y=0": p is the side of the screen that it snaps to, 0 for none.
Edge edgeOf(const QString& position) {
  constexpr double nearTop = 100;  // pixels
  double side = -1;
  double y = 0;
  const std::string text = position.toStdString();
  for (const std::string_view part : splitText(text, ';')) {
    const auto entry = keyAndValue(part);
    if (entry && entry->first == "p") side = plainNumber(entry->second).value_or(-1);
    if (entry && entry->first == "y") y = plainNumber(entry->second).value_or(0);
  }
  for (const double top : {2, 6, 9, 11}) {
    if (side == top) return Edge::top;
  }
  for (const double bottom : {4, 8, 10, 12}) {
    if (side == bottom) return Edge::bottom;
  }
  if (side != 0) return Edge::none;
  return y < nearTop ? Edge::top : Edge::bottom;
}

/// The paths of the panels that lie at an edge.
std::vector<std::string> panelsAt(Edge edge, const QVariantMap& properties) {
  std::vector<std::string> paths;
  for (const json& id : toJson(properties.value(panels))) {
    if (!id.is_number_integer()) continue;
    const std::string path = "/panels/panel-" + id.dump();
    const auto property = [&](const char* end) { return properties.value(QString::fromStdString(path + end)); };
    const bool horizontal = property("/mode").toUInt() == 0;
    if (horizontal && edgeOf(property("/position").toString()) == edge) paths.push_back(path);
  }
  return paths;
}

class XfcePanel final : public PanelSettings {
 public:
  explicit XfcePanel(std::string bus) : bus_(std::move(bus)) {}
  ~XfcePanel() override { QDBusConnection::disconnectFromBus(name_); }

  Result<std::vector<PanelSetting>> look() override {
    const auto reply = call("GetAllProperties", {channel, panels});
    if (!reply) return Failure{reply.error()};
    const auto properties = propertiesIn(*reply);
    if (!properties) return Failure{"Xfce's settings service gave an answer of another kind."};
    auto paths = panelsAt(Edge::top, *properties);
    if (paths.empty()) paths = panelsAt(Edge::bottom, *properties);
    if (paths.empty()) return Failure{"Xfce has no panel at the top or the bottom of the screen."};

    std::vector<PanelSetting> settings;
    const auto add = [&](const std::string& key, json clear) {
      settings.push_back({key, toJson(properties->value(QString::fromStdString(key))), std::move(clear)});
    };
    for (const std::string& path : paths) {
      add(path + std::string(colourEnd), json::array({0.0, 0.0, 0.0, 0.0}));
      add(path + std::string(styleEnd), solidColour);
    }
    add(darkMode, true);
    return settings;
  }

  Result<Done> write(const std::string& key, const json& value) override {
    const QString property = QString::fromStdString(key);
    if (value.is_null()) return done(call("ResetProperty", {channel, property, false}));
    const auto typed = fromJson(key, value);
    if (!typed) return Failure{"The value to put back for " + key + " is of another kind."};
    return done(call("SetProperty", {channel, property, QVariant::fromValue(QDBusVariant(*typed))}));
  }

 private:
  static Result<Done> done(const Result<QDBusMessage>& reply) {
    if (reply) return Done{};
    return Failure{reply.error()};
  }

  Result<QDBusMessage> call(const char* method, const QVariantList& arguments) {
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromStdString(bus_), name_);
    auto message = QDBusMessage::createMethodCall(service, QStringLiteral("/org/xfce/Xfconf"), service,
                                                  QString::fromLatin1(method));
    message.setArguments(arguments);
    message.setAutoStartService(false);
    const QDBusMessage reply = bus.call(message, QDBus::Block, patienceMilliseconds);
    if (reply.type() == QDBusMessage::ReplyMessage) return reply;
    QDBusConnection::disconnectFromBus(name_);
    return Failure{"Xfce's settings service failed: " + printable(reply.errorMessage().simplified().toStdString())};
  }

  std::string bus_;
  QString name_ = QStringLiteral("veloria-panel-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
};

}  // namespace

std::unique_ptr<PanelSettings> xfcePanel(const Environment& environment) {
  return std::make_unique<XfcePanel>(busAddresses(environment).session);
}

}  // namespace veloria
