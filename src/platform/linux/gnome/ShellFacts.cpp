#include "platform/linux/gnome/ShellFacts.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <algorithm>
#include <cmath>
#include <utility>

#include "ShellExtension.h"
#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusService.h"

namespace veloria {

namespace {

const QString& service = shellService;
const auto path = QStringLiteral("/com/tollmere/Veloria/Shell");
const auto interface = QStringLiteral("com.tollmere.Veloria.Shell");
const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr std::size_t mostMonitors = 64;
constexpr double rounding = 1e-6;

bool isShare(double value) {
  return value >= -rounding && value <= 1 + rounding;
}

std::optional<Rect> placeIn(const QDBusArgument& argument) {
  Rect place;
  argument.beginStructure();
  argument >> place.x >> place.y >> place.width >> place.height;
  argument.endStructure();
  const bool plausible = isShare(place.x) && isShare(place.y) && isShare(place.maxX()) && isShare(place.maxY());
  return plausible && !place.empty() ? std::optional(place) : std::nullopt;
}

/// The argument if it has this signature.
std::optional<QDBusArgument> argumentIn(const QVariantMap& values, const char* name, const char* signature) {
  const QVariant value = values.value(QLatin1String(name));
  if (value.userType() != qMetaTypeId<QDBusArgument>()) return std::nullopt;
  const auto argument = qvariant_cast<QDBusArgument>(value);
  return argument.currentSignature() == QLatin1String(signature) ? std::optional(argument) : std::nullopt;
}

std::vector<Rect> placesIn(const QDBusArgument& argument) {
  std::vector<Rect> places;
  for (argument.beginArray(); !argument.atEnd() && places.size() < mostMonitors;) {
    if (const auto place = placeIn(argument)) places.push_back(*place);
  }
  argument.endArray();  // frees what reading takes
  return places;
}

}  // namespace

class ShellFacts::Parts {
 public:
  Parts()
      : bus_(QDBusConnection::sessionBus()),
        moved_(bus_, {service, path, interface, QStringLiteral("Pointer")},
               [this](const QDBusMessage& message) { acceptPointer(message); }),
        runs_(
            bus_, service, [this] { return follow(); }, [this] { accept(std::nullopt); }) {}

  /// The shell ends the report of a program that has left the bus; this one may stay longer than its band.
  ~Parts() { watchPointer({}); }

  std::unique_ptr<QObject> follow() {
    const BusSignalName signal{service, path, properties, QStringLiteral("PropertiesChanged"), {interface}};
    return std::make_unique<BusReader>(bus_, BusMethod{service, path, properties, QStringLiteral("GetAll")},
                                       QVariantList{interface}, std::vector{signal},
                                       [this](const QDBusMessage& reply) { accept(propertiesIn(reply)); });
  }

  void accept(const std::optional<QVariantMap>& values) {
    const auto before = std::pair(answers, panel);
    answers = values.has_value();
    const auto place = answers ? argumentIn(*values, "Panel", "(dddd)") : std::nullopt;
    panel = place ? placeIn(*place) : std::nullopt;
    const auto places = answers ? argumentIn(*values, "FullScreen", "a(dddd)") : std::nullopt;
    fullScreen = places ? placesIn(*places) : std::vector<Rect>();
    if (answers != before.first) askForPointer();
    if (std::pair(answers, panel) == before) return;
    const auto handler = changed;
    if (*handler) (*handler)();
  }

  void acceptPointer(const QDBusMessage& message) {
    if (message.signature() != QLatin1String("dd") || area_.empty()) return;
    const Point point{message.arguments().at(0).toDouble(), message.arguments().at(1).toDouble()};
    if (isShare(point.x) && isShare(point.y)) pointer = point;
  }

  void watchPointer(const Rect& area) {
    if (area_ == area) return;
    area_ = area;
    askForPointer();
  }

  bool answers = false;
  std::optional<Rect> panel;
  std::vector<Rect> fullScreen;
  std::optional<Point> pointer;
  std::shared_ptr<std::function<void()>> changed = std::make_shared<std::function<void()>>();

 private:
  void askForPointer() {
    if (area_.empty() || !answers) pointer.reset();
    if (!answers) return;
    auto message = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("WatchPointer"));
    message.setArguments({area_.x, area_.y, area_.width, area_.height});
    message.setAutoStartService(false);
    bus_.send(message);
  }

  QDBusConnection bus_;
  Rect area_;
  BusSignal moved_;
  ServiceRuns runs_;
};

ShellFacts::ShellFacts() : parts_(std::make_unique<Parts>()) {}

ShellFacts::~ShellFacts() = default;

void ShellFacts::setChangeHandler(std::function<void()> handler) {
  parts_->changed = std::make_shared<std::function<void()>>(std::move(handler));
}

bool ShellFacts::answers() const {
  return parts_->answers;
}

std::optional<Rect> ShellFacts::panel() const {
  return parts_->panel;
}

const std::vector<Rect>& ShellFacts::fullScreen() const {
  return parts_->fullScreen;
}

std::optional<Point> ShellFacts::pointer() const {
  return parts_->pointer;
}

void ShellFacts::watchPointer(const Rect& area) {
  parts_->watchPointer(area);
}

PixelRect pixelsOf(const Rect& shares, const PixelRect& desktop) {
  const auto pixel = [](double share, int start, int length) {
    return start + static_cast<int>(std::lround(share * length));
  };
  const int left = pixel(shares.minX(), desktop.x, desktop.width);
  const int top = pixel(shares.minY(), desktop.y, desktop.height);
  return {left, top, pixel(shares.maxX(), desktop.x, desktop.width) - left,
          pixel(shares.maxY(), desktop.y, desktop.height) - top};
}

Rect sharesOf(const PixelRect& pixels, const PixelRect& desktop) {
  if (desktop.empty()) return {};
  const double width = desktop.width;
  const double height = desktop.height;
  return {(pixels.x - desktop.x) / width, (pixels.y - desktop.y) / height, pixels.width / width,
          pixels.height / height};
}

bool coverMonitor(const std::vector<Rect>& covered, const PixelRect& monitor, const PixelRect& desktop) {
  const auto area = [](const PixelRect& rect) { return static_cast<double>(rect.width) * rect.height; };
  return std::any_of(covered.begin(), covered.end(), [&](const Rect& each) {
    return 2 * area(intersection(pixelsOf(each, desktop), monitor)) > area(monitor);
  });
}

}  // namespace veloria
