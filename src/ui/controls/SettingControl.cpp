#include "ui/controls/SettingControl.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QRadioButton>

#include "ui/controls/GlyphButton.h"
#include "ui/controls/NumberWidgets.h"
#include "ui/controls/SettingLabel.h"

namespace veloria {

SettingControl::SettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
    : QWidget(parent), setting_(setting), editor_(editor), reset_(new GlyphButton(Glyph::toDefault, {}, this)) {
  setObjectName(QString::fromUtf8(setting.key.data(), static_cast<qsizetype>(setting.key.size())));
  reset_->setToolTip(tr("Back to the default"));
  reset_->setAccessibleName(tr("%1: back to the default").arg(title()));
  connect(reset_, &QToolButton::clicked, this, [this] {
    setFocus();  // the button is about to be disabled
    writeDefault();
  });
  subscription_ = editor_.subscribe([this](const NimbraConfig& config) {
    if (isVisible()) apply(config);
  });
}

void SettingControl::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  apply(editor_.config());
}

void SettingControl::apply(const NimbraConfig& config) {
  showConfig(config);
  reset_->setEnabled(!isDefault(config, setting_));
}

void SettingControl::write(double value) {
  editor_.change(setting_.key, [&](NimbraConfig& config) { setValue(config, setting_, value); });
  showConfig(editor_.config());
}

void SettingControl::writeDefault() {
  editor_.change(setting_.key, [&](NimbraConfig& config) { resetToDefault(config, setting_); });
}

QWidget* SettingControl::resetButton() {
  return reset_;
}

namespace {

/// A check box with a title and a help beside it.
class SwitchControl : public SettingControl {
 public:
  SwitchControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
      : SettingControl(setting, editor, parent), box_(new QCheckBox(this)) {
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(6);
    line->addLayout(makeButtonRow(*box_, title(), help(), *this), 1);
    line->addWidget(resetButton(), 0, Qt::AlignTop);
    setFocusProxy(box_);
    setTabOrder(box_, resetButton());
    connect(box_, &QCheckBox::clicked, this, [this](bool on) { write(on ? 1 : 0); });
  }

 protected:
  void showConfig(const NimbraConfig& config) override { box_->setChecked(valueIn(config, setting()) != 0); }

 private:
  QCheckBox* box_;
};

/// A title and a help, and below them a slider with its value.
class NumberControl : public SettingControl {
 public:
  NumberControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
      : SettingControl(setting, editor, parent),
        slider_(new SettingSlider(setting.range, this)),
        field_(new ValueField(setting.range, this)) {
    auto* name = new SettingLabel(SettingLabel::Tone::title, title(), this);
    auto* description = new SettingLabel(SettingLabel::Tone::help, help(), this);
    name->setBuddy(slider_);
    for (QWidget* part : {static_cast<QWidget*>(slider_), static_cast<QWidget*>(field_)}) {
      part->setAccessibleName(title());
      part->setAccessibleDescription(help());
    }
    setFocusProxy(slider_);
    setTabOrder(slider_, field_);
    setTabOrder(field_, resetButton());

    auto* line = new QHBoxLayout;
    line->addWidget(slider_, 1);
    line->addWidget(field_);
    line->addWidget(resetButton());
    line->setSpacing(6);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(1);
    column->addWidget(name);
    column->addWidget(description);
    column->addLayout(line);

    connect(slider_, &SettingSlider::moved, this, &NumberControl::write);
    connect(field_, &ValueField::moved, this, &NumberControl::write);
    connect(slider_, &SettingSlider::defaultWanted, this, &NumberControl::writeDefault);
    connect(name, &SettingLabel::doubleClicked, this, &NumberControl::writeDefault);
  }

 protected:
  void showConfig(const NimbraConfig& config) override {
    const double value = valueIn(config, setting());
    slider_->setShownValue(value);
    field_->setShownValue(value);
  }

 private:
  SettingSlider* slider_;
  ValueField* field_;
};

/// A title, and below it a radio button with a help for each choice.
class ChoiceControl : public SettingControl {
 public:
  ChoiceControl(const Setting& setting, SettingsEditor& editor, QWidget* parent)
      : SettingControl(setting, editor, parent), group_(new QButtonGroup(this)) {
    setAccessibleName(title());
    setAccessibleDescription(help());
    auto* head = new QHBoxLayout;
    head->addWidget(new SettingLabel(SettingLabel::Tone::title, title(), this), 1);
    head->addWidget(resetButton(), 0, Qt::AlignTop);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    column->addLayout(head);
    QWidget* last = nullptr;
    for (const Choice& choice : SettingCatalogue::choices(setting)) {
      auto* button = new QRadioButton(this);
      group_->addButton(button, static_cast<int>(group_->buttons().size()));
      column->addLayout(
          makeButtonRow(*button, SettingCatalogue::tr(choice.title), SettingCatalogue::tr(choice.help), *this));
      if (last != nullptr) setTabOrder(last, button);
      last = button;
    }
    setTabOrder(last, resetButton());
    setFocusProxy(group_->button(0));
    connect(group_, &QButtonGroup::idToggled, this, [this](int index, bool on) {
      if (on && index != static_cast<int>(currentValue())) write(index);
    });
  }

 protected:
  void showConfig(const NimbraConfig& config) override {
    QAbstractButton* button = group_->button(static_cast<int>(valueIn(config, setting())));
    if (button == nullptr) return;
    setFocusProxy(button);
    button->setChecked(true);
  }

 private:
  QButtonGroup* group_;
};

}  // namespace

SettingControl* makeSettingControl(const Setting& setting, SettingsEditor& editor, QWidget* parent) {
  switch (kindOf(setting)) {
    case SettingKind::toggle:
      return new SwitchControl(setting, editor, parent);
    case SettingKind::number:
      return new NumberControl(setting, editor, parent);
    case SettingKind::choice:
      return new ChoiceControl(setting, editor, parent);
  }
  return nullptr;
}

}  // namespace veloria
