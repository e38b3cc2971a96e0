#include "TrayMenu.h"

#include <QKeySequence>
#include <QString>
#include <utility>

namespace veloria {

namespace {

// The library takes "&" for the mark of a mnemonic.
QString menuText(const std::string& title) {
  return QString::fromStdString(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QKeySequence shortcut(const std::string& keyEquivalent) {
  if (keyEquivalent.empty()) return {};
  return QKeySequence(QStringLiteral("Ctrl+") + QString::fromStdString(keyEquivalent));
}

}  // namespace

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

// The library has turned a check mark over by itself; it is put back to what the settings say.
void TrayMenu::choose(QAction* action) {
  const MenuItem item = items_.at(action);
  chosen_(item);
  fill(menu_, model_);
}

}  // namespace veloria
