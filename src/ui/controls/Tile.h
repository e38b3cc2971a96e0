#pragma once

#include <QImage>
#include <QLayout>
#include <QRadioButton>
#include <QString>
#include <memory>
#include <vector>

#include "settings/Palette.h"

namespace veloria {

/// One of several pictures to choose from, with a name and a description. To the keyboard and to assistive software it
/// is a radio button: one sibling is in the tab order, arrows move between them, Enter and Space choose. A click does
/// not check it; its owner does.
class Tile : public QRadioButton {
  Q_OBJECT

 public:
  Tile(const QString& name, const QString& description, int pictureHeight, QWidget* parent);

  /// Shown until there is a picture, or instead of one.
  void setColors(const Palette& palette);
  void setPicture(const QImage& picture);
  const QImage& picture() const { return picture_; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  bool hitButton(const QPoint& at) const override { return rect().contains(at); }
  void nextCheckState() override {}

 private:
  QList<Tile*> siblings() const;
  Tile* neighbor(int key) const;
  void paintPicture(QPainter& painter, const QRectF& area) const;
  void paintTexts(QPainter& painter, const QRect& area) const;
  int textHeight(int width) const;
  QFont nameFont() const;

  QString description_;
  int pictureHeight_;
  Palette colors_;
  QImage picture_;
};

/// Lays out similar widgets in rows, as many per row as fit, all as wide as the widest needs. Longer texts make more
/// rows, not a wider window.
class TileLayout : public QLayout {
  Q_OBJECT

 public:
  enum class Width { natural, fill };  ///< `fill` divides the whole row among its tiles

  explicit TileLayout(Width width, QWidget* parent = nullptr);
  ~TileLayout() override;

  void addItem(QLayoutItem* item) override;
  int count() const override { return static_cast<int>(items_.size()); }
  QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;

  Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSize() const override;
  void setGeometry(const QRect& area) override;

 private:
  std::vector<QLayoutItem*> shown() const;
  /// Returns the height of the tiles in `area`; moves them there if `place` is set.
  int arrange(const QRect& area, bool place) const;

  Width width_;
  std::vector<std::unique_ptr<QLayoutItem>> items_;
};

}  // namespace veloria
