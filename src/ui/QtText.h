#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>
#include <string_view>

namespace veloria {

inline QString toQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Translates a text that another room holds; `context` is the type that holds it.
inline QString translated(const char* context, std::string_view text) {
  return QCoreApplication::translate(context, std::string(text).c_str());
}

/// Allows line breaks inside words that are too long for a line, such as paths.
inline QString breakable(const QString& text) {
  constexpr int longestWord = 28;
  constexpr QChar zeroWidthSpace(0x200B);
  QString result;
  result.reserve(text.size());
  int length = 0;
  for (const QChar character : text) {
    const bool splits = character.isLowSurrogate() || character.isMark();
    if (length >= longestWord && !splits) {
      result += zeroWidthSpace;
      length = 0;
    }
    result += character;
    length = character.isSpace() ? 0 : length + 1;
  }
  return result;
}

}  // namespace veloria
