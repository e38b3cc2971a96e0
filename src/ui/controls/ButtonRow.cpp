#include "ui/controls/ButtonRow.h"

#include <QHBoxLayout>

#include "ui/controls/SettingLabel.h"

namespace veloria {

QLayout* makeButtonRow(QAbstractButton& button, const QString& title, const QString& help, QWidget& parent) {
  button.setAccessibleName(title);
  button.setAccessibleDescription(help);
  auto* words = new QVBoxLayout;
  words->setSpacing(1);
  for (const auto tone : {SettingLabel::Tone::title, SettingLabel::Tone::help}) {
    auto* label = new SettingLabel(tone, tone == SettingLabel::Tone::title ? title : help, &parent);
    if (tone == SettingLabel::Tone::title) label->setBuddy(&button);
    QObject::connect(label, &SettingLabel::clicked, &button, [&button] {
      button.setFocus(Qt::MouseFocusReason);
      button.click();
    });
    words->addWidget(label);
  }
  auto* row = new QHBoxLayout;
  row->setSpacing(8);
  row->addWidget(&button, 0, Qt::AlignTop);
  row->addLayout(words, 1);
  return row;
}

}  // namespace veloria
