#include "ui/cards/PaletteEditor.h"

#include <QColorDialog>
#include <QHBoxLayout>
#include <QIcon>
#include <QPixmap>
#include <algorithm>
#include <string>
#include <utility>

#include "scene/ColorStops.h"
#include "ui/QtText.h"
#include "ui/controls/Swatch.h"
#include "ui/controls/Tile.h"

namespace veloria {

namespace {

constexpr QSize chip{28, 18};
constexpr const char* customName = "Custom";

QIcon chipOf(const QColor& color, double ratio) {
  QPixmap pixmap(chip * ratio);
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(color);
  return QIcon(pixmap);
}

/// The user's own palette, or a copy of the one in use, with at least `stops` colours.
Palette ownPalette(const NimbraConfig& config, std::size_t stops) {
  Palette palette = config.palette();
  if (!config.customPalette) palette.name = customName;
  palette.stops.resize(std::max(palette.stops.size(), stops));
  return palette;
}

}  // namespace

PaletteEditor::PaletteEditor(SettingsEditor& editor, QWidget* parent)
    : Card(tr("Your own palette"), parent),
      editor_(editor),
      state_(makeSentence({}, this)),
      error_(makeSentence({}, this)) {
  body().addWidget(state_);
  auto* stops = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::natural, stops);
  for (std::size_t i = 0; i < stopCount; ++i) layout->addWidget(makeStop(i));
  body().addWidget(stops);
  body().addWidget(error_);
  body().addWidget(makeButtons());
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) { showRecord(config); });
}

PaletteEditor::~PaletteEditor() {
  for (const Stop& stop : stops_) stop.hex->disconnect(this);  // a field may lose the focus after this is gone
}

QWidget* PaletteEditor::makeStop(std::size_t index) {
  auto* box = new QWidget(this);
  auto* row = new QHBoxLayout(box);
  row->setContentsMargins(0, 0, 0, 0);
  Stop& stop = stops_[index];
  const QString number = QString::number(index + 1);
  stop.button = new QPushButton(box);
  stop.button->setObjectName(QStringLiteral("color") + number);
  stop.button->setIconSize(chip);
  stop.button->setAccessibleName(tr("Choose colour %1").arg(number));
  stop.button->setToolTip(stop.button->accessibleName());
  stop.hex = new QLineEdit(box);
  stop.hex->setObjectName(QStringLiteral("hex") + number);
  stop.hex->setMaxLength(7);
  stop.hex->setAccessibleName(tr("Colour %1 as # and six digits").arg(number));
  stop.hex->setFixedWidth(stop.hex->fontMetrics().horizontalAdvance(QStringLiteral("#dddddd")) + 24);
  row->addWidget(stop.button);
  row->addWidget(stop.hex);
  connect(stop.button, &QPushButton::clicked, this, [this, index] { openDialog(index); });
  connect(stop.hex, &QLineEdit::textEdited, this, [this, index] { readHex(index, false); });
  connect(stop.hex, &QLineEdit::editingFinished, this, [this, index] { readHex(index, true); });
  return box;
}

QWidget* PaletteEditor::makeButtons() {
  auto* box = new QWidget(this);
  auto* layout = new TileLayout(TileLayout::Width::natural, box);
  copy_ = new QPushButton(tr("Start from this palette"), box);
  copy_->setObjectName(QStringLiteral("copyPalette"));
  aside_ = new QPushButton(tr("Put your palette aside"), box);
  aside_->setObjectName(QStringLiteral("putAside"));
  layout->addWidget(copy_);
  layout->addWidget(aside_);
  connect(copy_, &QPushButton::clicked, this, [this] {
    editor_.change("customPalette copy",
                   [](NimbraConfig& config) { config.customPalette = ownPalette(config, stopCount); });
  });
  connect(aside_, &QPushButton::clicked, this, [this] { editor_.putOwnPaletteAside(); });
  return box;
}

void PaletteEditor::showRecord(const NimbraConfig& config) {
  const bool own = config.customPalette.has_value();
  QString state = tr("These are the colours of the palette in use. Change one to make your own.");
  if (own) {
    state = tr("In use. Choosing a built-in palette puts it aside; its tile brings it back.");
  } else if (editor_.ownPalette()) {
    state += QLatin1Char(' ') + tr("It replaces the one that you put aside.");
  }
  setSentence(*state_, state);
  copy_->setEnabled(!own);
  aside_->setEnabled(own);
  const Palette palette = ownPalette(config, stopCount);
  for (std::size_t i = 0; i < stopCount; ++i) showStop(i, palette.stops[i]);
}

void PaletteEditor::showStop(std::size_t index, const ColorStop& stop) {
  const Stop& shown = stops_.at(index);
  const QString hex = hexOf(stop);
  shown.button->setIcon(chipOf(colorOf(stop), devicePixelRatioF()));
  shown.button->setAccessibleDescription(hex);
  const auto written = colorFromHex(shown.hex->text().toStdString());
  const bool typing = shown.hex->hasFocus() && written && hexOf(*written) == hex;
  if (!typing && shown.hex->text() != hex) shown.hex->setText(hex);
}

void PaletteEditor::setStop(std::size_t index, const ColorStop& stop) {
  editor_.change("customPalette " + std::to_string(index + 1), [&](NimbraConfig& config) {
    Palette palette = ownPalette(config, stopCount);
    palette.stops[index] = stop;
    config.customPalette = std::move(palette);
  });
}

void PaletteEditor::openDialog(std::size_t index) {
  const ColorStop before = ownPalette(editor_.config(), stopCount).stops.at(index);
  const bool own = editor_.config().customPalette.has_value();
  auto* dialog = new QColorDialog(colorOf(before), this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(tr("Colour %1 of your palette").arg(index + 1));
  connect(dialog, &QColorDialog::currentColorChanged, this,
          [this, index](const QColor& color) { setStop(index, stopOf(color)); });
  connect(dialog, &QColorDialog::rejected, this, [this, index, before, own] {
    if (own) return setStop(index, before);
    editor_.change("customPalette " + std::to_string(index + 1),
                   [](NimbraConfig& config) { config.customPalette.reset(); });
  });
  dialog->open();
}

void PaletteEditor::readHex(std::size_t index, bool finished) {
  const auto color = colorFromHex(stops_.at(index).hex->text().trimmed().toStdString());
  if (color) {
    setSentence(*error_, {});
    const Palette shown = ownPalette(editor_.config(), stopCount);
    if (hexOf(*color) != hexOf(shown.stops.at(index))) setStop(index, *color);
  } else if (finished) {
    setSentence(*error_, tr("Enter a colour as # and six hexadecimal digits, such as #0dff8c."));
  }
}

}  // namespace veloria
