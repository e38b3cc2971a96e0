#include "ui/controls/Tile.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QStyleOptionFocusRect>
#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <limits>

#include "ui/controls/Swatch.h"

namespace veloria {

namespace {

constexpr int margin = 6;
constexpr int gap = 4;
constexpr int naturalWidth = 168;
constexpr double ringWidth = 2.5;
constexpr double markRadius = 9;

bool isArrow(int key) {
  return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
}

/// A tick on a disc, so that the choice is visible without colour.
void paintMark(QPainter& painter, QPointF center, const QPalette& colors) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.color(QPalette::Highlight));
  painter.drawEllipse(center, markRadius, markRadius);
  QPainterPath tick(center + QPointF(-4, 0));
  tick.lineTo(center + QPointF(-1, 3.5));
  tick.lineTo(center + QPointF(4.5, -3.5));
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(colors.color(QPalette::HighlightedText), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(tick);
}

int widest(const std::vector<QLayoutItem*>& items, QSize (QLayoutItem::*size)() const) {
  int width = 0;
  for (const QLayoutItem* item : items) width = std::max(width, (item->*size)().width());
  return width;
}

int heightOf(const QLayoutItem& item, int width) {
  return item.hasHeightForWidth() ? item.heightForWidth(width) : item.sizeHint().height();
}

}  // namespace

Tile::Tile(const QString& name, const QString& description, int pictureHeight, QWidget* parent)
    : QRadioButton(parent), description_(description), pictureHeight_(pictureHeight) {
  setText(QString(name).replace(QLatin1Char('&'), QLatin1String("&&")));
  setAccessibleName(name);
  setAccessibleDescription(description);
  setAutoExclusive(false);
  setAttribute(Qt::WA_Hover);
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
  setFocusPolicy(siblings().size() <= 1 ? Qt::StrongFocus : Qt::ClickFocus);
}

void Tile::setColors(const Palette& palette) {
  colors_ = palette;
  update();
}

void Tile::setPicture(const QImage& picture) {
  picture_ = picture;
  update();
}

QFont Tile::nameFont() const {
  QFont bold = font();
  bold.setBold(true);
  return bold;
}

int Tile::textHeight(int width) const {
  const auto wrapped = [&](const QFont& used, const QString& text) {
    if (text.isEmpty()) return 0;
    return QFontMetrics(used).boundingRect(0, 0, width, 10000, Qt::TextWordWrap, text).height();
  };
  return wrapped(nameFont(), accessibleName()) + wrapped(font(), description_);
}

QSize Tile::sizeHint() const {
  return {naturalWidth, heightForWidth(naturalWidth)};
}

QSize Tile::minimumSizeHint() const {
  return {naturalWidth, pictureHeight_ + 2 * margin};
}

int Tile::heightForWidth(int width) const {
  return 2 * margin + pictureHeight_ + gap + textHeight(width - 2 * margin);
}

void Tile::paintPicture(QPainter& painter, const QRectF& area) const {
  if (picture_.isNull()) return paintPalette(painter, area, colors_);
  QPainterPath frame;
  frame.addRoundedRect(area, swatchRadius, swatchRadius);
  painter.save();
  painter.setClipPath(frame);
  painter.fillRect(area, nightColor);
  painter.drawImage(area, picture_);
  painter.restore();
}

void Tile::paintTexts(QPainter& painter, const QRect& area) const {
  QRect used;
  painter.setPen(palette().color(QPalette::WindowText));
  painter.setFont(nameFont());
  painter.drawText(area, Qt::TextWordWrap | Qt::AlignLeading, accessibleName(), &used);
  painter.setFont(font());
  painter.drawText(area.adjusted(0, used.height(), 0, 0), Qt::TextWordWrap | Qt::AlignLeading, description_);
}

void Tile::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  const QPalette colors = palette();
  const QRectF whole = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
  if (underMouse() || isChecked()) {
    QColor veil = colors.color(QPalette::Highlight);
    veil.setAlphaF(isChecked() ? 0.16F : 0.08F);
    painter.setBrush(veil);
    painter.setPen(isChecked() ? QPen(colors.color(QPalette::Highlight), ringWidth) : QPen(Qt::NoPen));
    painter.drawRoundedRect(whole, swatchRadius + 2, swatchRadius + 2);
  }
  const QRect inside = rect().adjusted(margin, margin, -margin, -margin);
  const QRect pictureArea(inside.left(), inside.top(), inside.width(), pictureHeight_);
  paintPicture(painter, pictureArea);
  if (isChecked()) paintMark(painter, QPointF(pictureArea.right() - 12, pictureArea.top() + 13), colors);
  paintTexts(painter, inside.adjusted(0, pictureHeight_ + gap, 0, 0));
  if (!hasFocus()) return;
  QStyleOptionFocusRect focus;
  focus.initFrom(this);
  focus.rect = rect().adjusted(3, 3, -3, -3);
  style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}

QList<Tile*> Tile::siblings() const {
  auto found = parentWidget()->findChildren<Tile*>(QString(), Qt::FindDirectChildrenOnly);
  found.removeIf([this](const Tile* tile) { return !tile->isVisibleTo(parentWidget()); });
  return found;
}

Tile* Tile::neighbor(int key) const {
  const auto all = siblings();
  const qsizetype at = all.indexOf(const_cast<Tile*>(this));
  if (key == Qt::Key_Left || key == Qt::Key_Right) {
    const bool forwards = (key == Qt::Key_Right) != isRightToLeft();
    return all.value(at + (forwards ? 1 : -1));
  }
  Tile* nearest = nullptr;
  int distance = std::numeric_limits<int>::max();
  for (Tile* tile : all) {
    const int down = tile->y() - y();
    if (tile->x() != x() || (key == Qt::Key_Down ? down <= 0 : down >= 0) || std::abs(down) >= distance) continue;
    nearest = tile;
    distance = std::abs(down);
  }
  return nearest;
}

void Tile::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return click();
  if (!isArrow(event->key())) return QRadioButton::keyPressEvent(event);
  if (Tile* next = neighbor(event->key())) next->setFocus(Qt::OtherFocusReason);
}

void Tile::focusInEvent(QFocusEvent* event) {
  QRadioButton::focusInEvent(event);
  for (Tile* tile : siblings()) tile->setFocusPolicy(tile == this ? Qt::StrongFocus : Qt::ClickFocus);
}

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
