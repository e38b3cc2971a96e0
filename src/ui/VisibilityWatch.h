#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

namespace veloria {

/// Tells when a widget begins and ceases to be seen: shown, in a window that is not minimised.
class VisibilityWatch : public QObject {
  Q_OBJECT

 public:
  /// `changed` is called on changes only, never from here, and never after this is gone: an owner that derives from
  /// the watched widget holds it as a member, for a widget is hidden once more while it is destroyed.
  VisibilityWatch(QWidget* watched, std::function<void(bool seen)> changed);

  bool seen() const { return seen_; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void look(bool shown);

  QWidget* watched_;
  QPointer<QWidget> window_;
  std::function<void(bool)> changed_;
  bool seen_ = false;
};

}  // namespace veloria
