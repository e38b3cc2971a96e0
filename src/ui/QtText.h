#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>
#include <string_view>

namespace veloria {

inline QString toQString(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The translation of a text that another room holds; `context` is the name of the type that holds it.
inline QString translated(const char* context, std::string_view text) {
  return QCoreApplication::translate(context, std::string(text).c_str());
}

/// The text with places to break a line inside of words that are too long for one: paths, and what others wrote.
QString breakable(const QString& text);

}  // namespace veloria
