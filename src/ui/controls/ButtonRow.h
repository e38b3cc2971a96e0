#pragma once

#include <QAbstractButton>
#include <QLayout>

namespace veloria {

/// A check box or radio button without a text of its own, and beside it a title and a help, which wrap. Clicking on
/// them clicks the button. The labels become children of `parent`.
QLayout* makeButtonRow(QAbstractButton& button, const QString& title, const QString& help, QWidget& parent);

}  // namespace veloria
