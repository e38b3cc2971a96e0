#include "ui/cards/EdgeCard.h"

#include <QRadioButton>

#include "ui/QtText.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

EdgeCard::EdgeCard(SettingsEditor& editor, QWidget* parent) : Card(tr("Edge of the screen"), parent), editor_(editor) {
  const std::pair<QString, QString> choices[] = {
      {tr("Where the panel is"), tr("At the top if there is no panel at the top or bottom.")},
      {tr("Top"), tr("Whatever the panels are.")},
      {tr("Bottom"), tr("The picture is mirrored: what the settings call the top is at the bottom.")}};
  for (const auto& [title, help] : choices) {
    auto* button = new QRadioButton(this);
    group_.addButton(button, static_cast<int>(group_.buttons().size()));
    body().addLayout(makeButtonRow(*button, title, help, *this));
  }
  connect(&group_, &QButtonGroup::idClicked, this, [this](int index) {
    ExtraSettings wanted = editor_.extra();
    wanted.edge = static_cast<EdgeChoice>(index);
    editor_.changeExtra("edge", wanted);
  });
  subscription_ = editor_.subscribe(
      [this](const NimbraConfig&) { group_.button(static_cast<int>(editor_.extra().edge))->setChecked(true); });
}

}  // namespace veloria
