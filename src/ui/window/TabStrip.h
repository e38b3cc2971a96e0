#pragma once

#include <QButtonGroup>
#include <QStringList>
#include <QToolButton>

namespace veloria {

/// The names of the tabs, all visible at any width: side by side if they fit, otherwise in rows of equal columns. Arrow
/// keys change the tab.
class TabStrip : public QWidget {
  Q_OBJECT

 public:
  TabStrip(const QStringList& titles, QWidget* parent);

  /// -1: none.
  void setCurrent(int index);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 Q_SIGNALS:
  /// The user chose a tab, possibly the current one.
  void chosen(int index);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  int columnsFor(int width) const;
  int widestButton() const;
  int allButtons() const;
  void placeButtons();

  QButtonGroup* buttons_;
};

}  // namespace veloria
