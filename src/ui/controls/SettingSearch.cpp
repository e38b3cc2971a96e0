#include "ui/controls/SettingSearch.h"

#include <algorithm>

namespace veloria {

namespace {

QString folded(const QString& text) {
  QString plain;
  for (const QChar c : text.normalized(QString::NormalizationForm_KD)) {
    if (!c.isMark()) plain += c;
  }
  return plain.toCaseFolded();
}

void add(QString& text, const char* english) {
  text += SettingCatalogue::tr(english) + '\n' + QString::fromUtf8(english) + '\n';
}

}  // namespace

QStringList searchWords(const QString& typed) {
  return folded(typed).simplified().split(' ', Qt::SkipEmptyParts);
}

bool containsWords(const QString& text, const QStringList& words) {
  const QString plain = folded(text);
  return std::all_of(words.begin(), words.end(), [&](const QString& word) { return plain.contains(word); });
}

QString searchText(const Setting& setting) {
  QString text = QString::fromUtf8(setting.key.data(), static_cast<qsizetype>(setting.key.size())) + '\n';
  for (const char* english : {setting.title, setting.help, setting.group, setting.synonyms}) add(text, english);
  add(text, SettingCatalogue::tabTitle(setting.tab));
  for (const Choice& choice : SettingCatalogue::choices(setting)) {
    add(text, choice.title);
    add(text, choice.help);
  }
  return text;
}

}  // namespace veloria
