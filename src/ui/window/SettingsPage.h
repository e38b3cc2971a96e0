#pragma once

#include <QScrollArea>
#include <QVBoxLayout>

namespace veloria {

/// A page that scrolls up and down, never sideways.
class SettingsPage : public QScrollArea {
  Q_OBJECT

 public:
  explicit SettingsPage(QWidget* parent);

  /// What scrolls.
  QVBoxLayout& column() { return *column_; }

 private:
  QVBoxLayout* column_;
};

}  // namespace veloria
