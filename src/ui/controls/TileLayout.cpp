#include "ui/controls/TileLayout.h"

#include <QWidget>
#include <algorithm>

namespace veloria {

namespace {

int widest(const std::vector<QLayoutItem*>& items, QSize (QLayoutItem::*size)() const) {
  int width = 0;
  for (const QLayoutItem* item : items) width = std::max(width, (item->*size)().width());
  return width;
}

int heightOf(const QLayoutItem& item, int width) {
  return item.hasHeightForWidth() ? item.heightForWidth(width) : item.sizeHint().height();
}

}  // namespace

TileLayout::TileLayout(Width width, QWidget* parent) : QLayout(parent), width_(width) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(8);
}

TileLayout::~TileLayout() = default;

void TileLayout::addItem(QLayoutItem* item) {
  items_.emplace_back(item);
  invalidate();
}

QLayoutItem* TileLayout::itemAt(int index) const {
  return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* TileLayout::takeAt(int index) {
  if (index < 0 || index >= count()) return nullptr;
  QLayoutItem* item = items_[static_cast<std::size_t>(index)].release();
  items_.erase(items_.begin() + index);
  invalidate();
  return item;
}

std::vector<QLayoutItem*> TileLayout::shown() const {
  std::vector<QLayoutItem*> found;
  for (const auto& item : items_) {
    if (!item->isEmpty()) found.push_back(item.get());
  }
  return found;
}

int TileLayout::heightForWidth(int width) const {
  return arrange({0, 0, width, 0}, false);
}

QSize TileLayout::sizeHint() const {
  const auto items = shown();
  const int width = widest(items, &QLayoutItem::sizeHint);
  const int columns = std::min<int>(2, static_cast<int>(items.size()));
  return {columns * width + std::max(columns - 1, 0) * spacing(), minimumSize().height()};
}

QSize TileLayout::minimumSize() const {
  int height = 0;
  const auto items = shown();
  for (const QLayoutItem* item : items) height = std::max(height, item->minimumSize().height());
  return {widest(items, &QLayoutItem::minimumSize), height};
}

void TileLayout::setGeometry(const QRect& area) {
  QLayout::setGeometry(area);
  arrange(area, true);
}

int TileLayout::arrange(const QRect& area, bool place) const {
  const auto items = shown();
  const int room = area.width() + spacing();
  const int natural = std::clamp(widest(items, &QLayoutItem::sizeHint), 1, std::max(area.width(), 1));
  const int columns = std::max(1, room / (natural + spacing()));
  const int tile = width_ == Width::fill ? room / columns - spacing() : natural;
  const bool mirrored = parentWidget() != nullptr && parentWidget()->isRightToLeft();
  int y = area.top();
  for (std::size_t first = 0; first < items.size(); first += static_cast<std::size_t>(columns)) {
    const std::size_t end = std::min(items.size(), first + static_cast<std::size_t>(columns));
    int rowHeight = 0;
    for (std::size_t i = first; i < end; ++i) rowHeight = std::max(rowHeight, heightOf(*items[i], tile));
    for (std::size_t i = first; place && i < end; ++i) {
      const int offset = static_cast<int>(i - first) * (tile + spacing());
      const int x = mirrored ? area.right() + 1 - offset - tile : area.left() + offset;
      items[i]->setGeometry({x, y, tile, rowHeight});
    }
    y += rowHeight + spacing();
  }
  return std::max(0, y - area.top() - spacing());
}

}  // namespace veloria
