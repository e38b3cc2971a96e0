#pragma once

#include <QToolButton>

namespace veloria {

enum class Glyph { undo, redo, toDefault };

/// A small flat button with a drawn symbol in the colours of the palette. `words` become its tooltip and accessible
/// name. A disabled `toDefault` is invisible but keeps its place.
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
