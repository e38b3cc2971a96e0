#include "platform/linux/tray/TrayIcon.h"

#include <QAction>
#include <QColor>
#include <QCursor>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QIcon>
#include <QKeySequence>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPixmap>
#include <QPointF>
#include <QString>
#include <QSystemTrayIcon>
#include <map>
#include <utility>

#include "TrayHosts.h"
#include "platform/linux/bus/BusService.h"

namespace veloria {

namespace {

constexpr const char* noTray =
    "Veloria: this desktop shows no status icons now. To open the settings, run veloria again.";

const auto appearance = QStringLiteral("org.freedesktop.appearance");
constexpr uint prefersLight = 2;

/// The shade of the panel behind an icon.
enum class PanelShade { dark, light };

constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};
constexpr double waist = 0.16;  // how far a star's sides bend in, as a fraction of its reach
constexpr double edgeWidth = 0.07;
constexpr int edgeAlpha = 120;

struct Star {
  QPointF center;  // in a square of side 1, y down
  double reach;
};
const Star stars[] = {{{0.42, 0.56}, 0.40}, {{0.80, 0.22}, 0.18}, {{0.82, 0.83}, 0.13}};

QPainterPath outline(const Star& star) {
  const QPointF& c = star.center;
  const double r = star.reach;
  const double w = r * waist;
  QPainterPath path(c + QPointF(0, -r));
  path.quadTo(c + QPointF(w, -w), c + QPointF(r, 0));
  path.quadTo(c + QPointF(w, w), c + QPointF(0, r));
  path.quadTo(c + QPointF(-w, w), c + QPointF(-r, 0));
  path.quadTo(c + QPointF(-w, -w), c + QPointF(0, -r));
  return path;
}

QPixmap draw(int size, const QColor& ink, QColor edge) {
  QPixmap picture(size, size);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(size, size);
  QPainterPath all;
  for (const Star& star : stars) all.addPath(outline(star));
  edge.setAlpha(edgeAlpha);
  painter.strokePath(all, QPen(edge, edgeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.fillPath(all, ink);
  return picture;
}

/// The program's status icon: a large four-pointed star and two small ones, in one color that stands out from the
/// panel, with a faint edge that keeps it visible on the other shade. In the sizes that panels ask for.
QIcon sparkles(PanelShade panel) {
  const QColor light(0xF2, 0xF2, 0xF2);
  const QColor dark(0x26, 0x26, 0x26);
  const bool onDark = panel == PanelShade::dark;
  QIcon icon;
  for (const int size : sizes) icon.addPixmap(draw(size, onDark ? light : dark, onDark ? dark : light));
  return icon;
}

/// The likely shade of the panel: light if the desktop prefers light windows, else dark.
PanelShade panelShade(const QVariant& colorScheme) {
  const bool light = colorScheme.typeId() == QMetaType::UInt && colorScheme.toUInt() == prefersLight;
  return light ? PanelShade::light : PanelShade::dark;
}

bool onX11() {
  return qGuiApp->nativeInterface<QNativeInterface::QX11Application>() != nullptr;
}

bool controlHeld() {
  return onX11() && (QGuiApplication::queryKeyboardModifiers() & Qt::ControlModifier) != 0;
}

std::optional<Rect> pointerPlace() {
  if (!onX11()) return std::nullopt;
  const QPoint point = QCursor::pos();
  return Rect{static_cast<double>(point.x()), static_cast<double>(point.y()), 1, 1};
}

// The library reads "&" as the mark of a mnemonic.
QString menuText(const std::string& title) {
  return QString::fromStdString(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QKeySequence shortcut(const std::string& keyEquivalent) {
  if (keyEquivalent.empty()) return {};
  return QKeySequence(QStringLiteral("Ctrl+") + QString::fromStdString(keyEquivalent));
}

/// Keeps a menu of the widget library equal to the model.
class TrayMenu {
 public:
  explicit TrayMenu(std::function<void(const MenuItem&)> chosen);
  TrayMenu(const TrayMenu&) = delete;
  TrayMenu& operator=(const TrayMenu&) = delete;

  /// Updates the lines in place, so that an open menu stays open. May be called by the handler of a choice.
  void set(const Menu& model);

  QMenu& widget() { return menu_; }

 private:
  void fill(QMenu& menu, const Menu& model);
  void addLine(QMenu& menu);
  void removeLine(QMenu& menu);
  void setLine(QMenu& menu, QAction& action, const MenuItem& item);
  void choose(QAction* action);

  std::function<void(const MenuItem&)> chosen_;
  Menu model_;
  std::map<QAction*, MenuItem> items_;
  QMenu menu_;
};

TrayMenu::TrayMenu(std::function<void(const MenuItem&)> chosen) : chosen_(std::move(chosen)) {}

void TrayMenu::set(const Menu& model) {
  model_ = model;
  fill(menu_, model_);
}

void TrayMenu::fill(QMenu& menu, const Menu& model) {
  const auto wanted = static_cast<qsizetype>(model.size());
  while (menu.actions().size() > wanted) removeLine(menu);
  while (menu.actions().size() < wanted) addLine(menu);
  for (qsizetype i = 0; i < wanted; ++i) setLine(menu, *menu.actions().at(i), model[static_cast<std::size_t>(i)]);
}

void TrayMenu::addLine(QMenu& menu) {
  QAction* action = menu.addAction(QString());
  QObject::connect(action, &QAction::triggered, &menu_, [this, action] { choose(action); });
}

void TrayMenu::removeLine(QMenu& menu) {
  QAction* action = menu.actions().constLast();
  if (action->menu() != nullptr) fill(*action->menu(), {});
  items_.erase(action);
  menu.removeAction(action);
  action->deleteLater();
}

void TrayMenu::setLine(QMenu& menu, QAction& action, const MenuItem& item) {
  items_[&action] = item;
  action.setSeparator(item.separator);
  action.setText(menuText(item.title));
  action.setEnabled(item.enabled);
  action.setCheckable(item.checked.has_value());
  action.setChecked(item.checked.value_or(false));
  action.setShortcut(shortcut(item.keyEquivalent));
  if (item.submenu.empty() && action.menu() == nullptr) return;
  if (action.menu() == nullptr) action.setMenu(new QMenu(&menu));
  fill(*action.menu(), item.submenu);
}

// The library has toggled the check mark by itself; this restores what the settings say.
void TrayMenu::choose(QAction* action) {
  const MenuItem item = items_.at(action);
  chosen_(item);
  fill(menu_, model_);
}

}  // namespace

class TrayIcon::Parts {
 public:
  explicit Parts(std::function<void(std::string_view)> log)
      : log_(std::move(log)),
        menu_([this](const MenuItem& item) { chosen(item); }),
        hosts_(QDBusConnection::sessionBus(), [this](TrayHosts hosts) { hostsChanged(hosts); }),
        portal_(
            QDBusConnection::sessionBus(), portalService, [this] { return followPortal(); }, [] {}) {}

  void setHandlers(Handlers handlers) { handlers_ = std::move(handlers); }
  TrayMenu& menu() { return menu_; }

  std::optional<Rect> place() const {
    const QRect icon = icon_ ? icon_->geometry() : QRect();
    if (icon.isEmpty()) return lastClick_;
    return Rect{static_cast<double>(icon.x()), static_cast<double>(icon.y()), static_cast<double>(icon.width()),
                static_cast<double>(icon.height())};
  }

  void showMenu() {
    if (onX11() && !menu_.widget().isVisible()) menu_.widget().popup(QCursor::pos());
  }

 private:
  // Not before there is a host: the library chooses the kind of icon for good when the first one is made.
  void hostsChanged(TrayHosts hosts) {
    if (icon_) return;
    if (hosts.statusNotifier || hosts.x11) return makeIcon();
    if (!std::exchange(complained_, true)) log_(noTray);
  }

  void makeIcon() {
    icon_ = std::make_unique<QSystemTrayIcon>(sparkles(shade_));
    icon_->setToolTip(QStringLiteral("Veloria — click for settings"));
    icon_->setContextMenu(&menu_.widget());
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(), [this](auto reason) { activated(reason); });
    icon_->show();
  }

  std::unique_ptr<QObject> followPortal() {
    return followPortalSettings(QDBusConnection::sessionBus(), {appearance}, [this](const PortalSettings& settings) {
      if (!settings.contains(appearance)) return;
      setShade(panelShade(settings.value(appearance).value(QStringLiteral("color-scheme"))));
    });
  }

  void setShade(PanelShade shade) {
    if (std::exchange(shade_, shade) != shade && icon_) icon_->setIcon(sparkles(shade_));
  }

  void activated(QSystemTrayIcon::ActivationReason reason) {
    switch (reason) {
      case QSystemTrayIcon::Trigger:
        return clicked(Click::primary);
      case QSystemTrayIcon::Context:
        return clicked(Click::secondary);
      case QSystemTrayIcon::Unknown:
      case QSystemTrayIcon::DoubleClick:
      case QSystemTrayIcon::MiddleClick:
        return;
    }
  }

  void clicked(Click click) {
    lastClick_ = pointerPlace();
    if (handlers_.clicked) handlers_.clicked(click, controlHeld());
  }

  void chosen(const MenuItem& item) {
    lastClick_ = pointerPlace();
    if (handlers_.chosen) handlers_.chosen(item);
  }

  std::function<void(std::string_view)> log_;
  Handlers handlers_;
  bool complained_ = false;
  PanelShade shade_ = PanelShade::dark;
  std::optional<Rect> lastClick_;
  TrayMenu menu_;
  std::unique_ptr<QSystemTrayIcon> icon_;
  TrayHostsWatch hosts_;
  ServiceRuns portal_;
};

TrayIcon::TrayIcon(std::function<void(std::string_view)> log) : parts_(std::make_unique<Parts>(std::move(log))) {}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setHandlers(Handlers handlers) {
  parts_->setHandlers(std::move(handlers));
}

void TrayIcon::setMenu(const Menu& menu) {
  parts_->menu().set(menu);
}

void TrayIcon::showMenu() {
  parts_->showMenu();
}

std::optional<Rect> TrayIcon::place() const {
  return parts_->place();
}

}  // namespace veloria
