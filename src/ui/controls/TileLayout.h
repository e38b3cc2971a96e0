#pragma once

#include <QLayout>
#include <memory>
#include <vector>

namespace veloria {

/// Lays widgets of the same kind out in rows, as many in a row as there is room for, all as wide as the widest needs:
/// text that has grown in translation makes more rows, not a wider window.
class TileLayout : public QLayout {
  Q_OBJECT

 public:
  enum class Width { natural, fill };  ///< `fill` shares a row's whole width among its tiles

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
  /// The height that the tiles take in `area`; moves them there when `place` is set.
  int arrange(const QRect& area, bool place) const;

  Width width_;
  std::vector<std::unique_ptr<QLayoutItem>> items_;
};

}  // namespace veloria
