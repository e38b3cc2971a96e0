#pragma once

#include <QAction>
#include <QMenu>
#include <functional>
#include <map>

#include "ports/Menu.h"

namespace veloria {

/// A menu of the widget library that is kept equal to the model. Main thread, with a QApplication.
class TrayMenu {
 public:
  explicit TrayMenu(std::function<void(const MenuItem&)> chosen);
  TrayMenu(const TrayMenu&) = delete;
  TrayMenu& operator=(const TrayMenu&) = delete;

  /// Changes the lines that differ and leaves the others alone, so an open menu stays as it is. May be called while a
  /// choice is worked on.
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

}  // namespace veloria
