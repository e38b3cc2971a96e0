#pragma once

#include <QPalette>

namespace veloria::tests {

/// The colours of a dark desktop.
inline QPalette darkPalette() {
  const QColor window(46, 46, 50), base(34, 34, 37), ink(236, 236, 238), faint(130, 130, 135);
  QPalette palette(ink, QColor(62, 62, 67), QColor(90, 90, 96), QColor(28, 28, 30), QColor(76, 76, 82), ink, ink, base,
                   window);
  palette.setColor(QPalette::Highlight, QColor(64, 128, 222));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::PlaceholderText, faint);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, faint);
  }
  return palette;
}

}  // namespace veloria::tests
