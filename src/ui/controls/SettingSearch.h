#pragma once

#include <QString>
#include <QStringList>

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// What a person typed into the search field, as words: case and accents don't count, nor do the words' order and the
/// space around them.
QStringList searchWords(const QString& typed);

/// Whether each of the words is somewhere in the text.
bool containsWords(const QString& text, const QStringList& words);

/// All in which a setting is looked for: its key, and its title, help, group, tab, choices and synonyms both in the
/// person's language and in English.
QString searchText(const Setting& setting);

}  // namespace veloria
