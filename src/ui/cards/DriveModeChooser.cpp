#include "ui/cards/DriveModeChooser.h"

#include <QRadioButton>
#include <array>

#include "ui/QtText.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

QString driveModeTitle(Visualizer mode) {
  static constexpr std::array titles{
      QT_TRANSLATE_NOOP("DriveMode", "On its own"), QT_TRANSLATE_NOOP("DriveMode", "Music"),
      QT_TRANSLATE_NOOP("DriveMode", "AI agent"),   QT_TRANSLATE_NOOP("DriveMode", "Weather"),
      QT_TRANSLATE_NOOP("DriveMode", "Wind"),       QT_TRANSLATE_NOOP("DriveMode", "Script"),
  };
  static_assert(titles.size() == rawValues<Visualizer>.size());
  return QCoreApplication::translate("DriveMode", titles[static_cast<std::size_t>(mode)]);
}

DriveModeChooser::DriveModeChooser(SettingsEditor& editor, QWidget* parent)
    : Card(tr("What drives the band"), parent), editor_(editor), modes_(new QButtonGroup(this)) {
  for (std::size_t i = 0; i < rawValues<Visualizer>.size(); ++i) addMode(static_cast<Visualizer>(i));
  connect(modes_, &QButtonGroup::idClicked, this, [this](int id) {
    editor_.change("visualizer", [id](NimbraConfig& config) { config.visualizer = static_cast<Visualizer>(id); });
  });
  subscription_ = editor_.subscribe(
      [this](const NimbraConfig& config) { modes_->button(static_cast<int>(config.visualizer))->setChecked(true); });
}

void DriveModeChooser::addMode(Visualizer mode) {
  auto* button = new QRadioButton(this);
  button->setObjectName(toQString(rawValue(mode)));
  modes_->addButton(button, static_cast<int>(mode));
  body().addLayout(makeButtonRow(*button, driveModeTitle(mode), translated("DriveMode", description(mode)), *this));
}

}  // namespace veloria
