#include "ui/window/SettingsPage.h"

namespace veloria {

SettingsPage::SettingsPage(QWidget* parent) : QScrollArea(parent) {
  setFrameShape(NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);
  auto* content = new QWidget;
  column_ = new QVBoxLayout(content);
  column_->setContentsMargins(0, 6, 6, 6);
  column_->setSpacing(8);
  setWidget(content);
}

}  // namespace veloria
