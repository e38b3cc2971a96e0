#pragma once

#include <QToolButton>

namespace veloria {

enum class Glyph { undo, redo, toDefault };

/// A small flat button with a drawn sign, in the colours of the palette at any scale. Its words are its tooltip and
/// accessible name. A `toDefault` that is disabled shows nothing, but keeps its place.
class GlyphButton : public QToolButton {
  Q_OBJECT

 public:
  GlyphButton(Glyph glyph, const QString& words, QWidget* parent);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Glyph glyph_;
};

}  // namespace veloria
