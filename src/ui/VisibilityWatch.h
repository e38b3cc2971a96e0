#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

namespace veloria {

/// Reports when a widget becomes visible or hidden. Visible means shown in a window that is not minimised.
class VisibilityWatch : public QObject {
  Q_OBJECT

 public:
  /// `changed` is called on changes only, never by the constructor and never after this object is gone. A widget that
  /// watches itself must hold this as a member, because it is hidden once more during its destruction.
  VisibilityWatch(QWidget* watched, std::function<void(bool seen)> changed);

  bool seen() const { return seen_; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void update(bool shown);

  QWidget* watched_;
  QPointer<QWidget> window_;
  std::function<void(bool)> changed_;
  bool seen_ = false;
};

}  // namespace veloria
