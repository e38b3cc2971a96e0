#include "ui/QtText.h"

namespace veloria {

namespace {

constexpr int longestWord = 28;
constexpr QChar zeroWidthSpace(0x200B);

}  // namespace

QString breakable(const QString& text) {
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
