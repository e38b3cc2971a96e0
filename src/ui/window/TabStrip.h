#pragma once

#include <QButtonGroup>
#include <QStringList>
#include <QToolButton>

namespace veloria {

/// The names of the tabs, all of them seen at any width: side by side where they fit, else in rows of equal columns.
/// One of them is chosen; arrow keys move the choice.
class TabStrip : public QWidget {
  Q_OBJECT

 public:
  TabStrip(const QStringList& titles, QWidget* parent);

  /// -1: none is chosen.
  void setCurrent(int index);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 Q_SIGNALS:
  /// A person chose a tab, perhaps the one that was chosen already.
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
