#include <QAbstractButton>
#include <QAccessible>
#include <QButtonGroup>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <limits>
#include <random>

#include "ConfigDifference.h"
#include "SettingsWindowTest.h"
#include "settings/SettingsCodec.h"
#include "ui/controls/GlyphButton.h"
#include "ui/controls/SettingLabel.h"
#include "ui/controls/SettingValue.h"

namespace veloria {
namespace {

using testing::Contains;
using testing::ElementsAre;

NimbraConfig absurdConfig() {
  NimbraConfig config;
  config.exposure = 50;
  config.opacity = -3;
  config.glowAmount = 1e300;
  config.timeScale = 0;
  config.dyeDissipation = 1.5;
  config.framesPerSecond = std::numeric_limits<std::int64_t>::max();
  config.pressureIterations = -7;
  config.contrast = std::numeric_limits<double>::infinity();
  config.flowSpeed = -std::numeric_limits<double>::infinity();
  config.saturation = 1.23456789012345;
  config.weatherLatitude = 91;
  return config;
}

/// Moves a control by the keyboard, away from where it is.
void moveByKeyboard(SettingControl& control, const NimbraConfig& config) {
  const Setting& setting = control.setting();
  control.setFocus();
  QWidget* target = QApplication::focusWidget();
  const bool atEnd = valueIn(config, setting) >= setting.range.maximum;
  switch (kindOf(setting)) {
    case SettingKind::toggle:
      return QTest::keyClick(target, Qt::Key_Space);
    case SettingKind::number:
      return QTest::keyClick(target, atEnd ? Qt::Key_Left : Qt::Key_Right);
    case SettingKind::choice:
      return QTest::keyClick(target, valueIn(config, setting) == 0 ? Qt::Key_Down : Qt::Key_Up);
  }
}

/// The title of a choice that is not chosen, or the title of a switch.
QWidget* labelToClick(SettingControl& control) {
  for (auto* button : control.findChildren<QAbstractButton*>()) {
    if (qobject_cast<GlyphButton*>(button) != nullptr) continue;
    if (kindOf(control.setting()) == SettingKind::choice && button->isChecked()) continue;
    for (auto* label : control.findChildren<SettingLabel*>()) {
      if (label->buddy() == button) return label;
    }
  }
  return nullptr;
}

void moveByMouse(SettingControl& control, SettingSlider* slider) {
  if (slider == nullptr) return QTest::mouseClick(labelToClick(control), Qt::LeftButton);
  const bool high = slider->value() > slider->maximum() / 2;
  const QPoint aim(high ? slider->width() / 10 : slider->width() * 9 / 10, slider->height() / 2);
  QTest::mouseClick(slider, Qt::LeftButton, {}, aim);
}

void expectOnlyThatMoved(const Setting& setting, const NimbraConfig& before, const NimbraConfig& after) {
  EXPECT_THAT(differingKeys(before, after), ElementsAre(std::string(setting.key)));
  NimbraConfig held = after;
  setValue(held, setting, valueIn(after, setting));
  EXPECT_EQ(held, after) << setting.key << " is out of range";
}

TEST_F(SettingsWindowTest, EachControlIsMovedByTheKeyboardAndMovesItsFieldOnly) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    const NimbraConfig before = config();
    moveByKeyboard(control(setting), before);
    expectOnlyThatMoved(setting, before, config());
  }
}

TEST_F(SettingsWindowTest, EachControlIsMovedByTheMouseAndMovesItsFieldOnly) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    const NimbraConfig before = config();
    SettingControl& moved = control(setting);
    moveByMouse(moved, moved.findChild<SettingSlider*>());
    expectOnlyThatMoved(setting, before, config());
  }
}

TEST_F(SettingsWindowTest, EachNumberIsTyped) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    if (kindOf(setting) != SettingKind::number) continue;
    const NimbraConfig before = config();
    ValueField& typed = field(control(setting));
    typed.setFocus();
    typed.selectAll();
    QTest::keyClicks(&typed, typed.locale().toString(setting.range.maximum, 'f', setting.range.decimals));
    EXPECT_EQ(config(), before) << setting.key << " was changed before Enter";
    key(typed, Qt::Key_Return);
    expectOnlyThatMoved(setting, before, config());
    EXPECT_EQ(valueIn(config(), setting), setting.range.maximum) << setting.key;
  }
}

TEST_F(SettingsWindowTest, EachControlGoesBackToItsDefaultByTheKeyboard) {
  NimbraConfig moved;
  for (const Setting& setting : SettingCatalogue::all()) {
    setValue(moved, setting, valueIn(moved, setting) > setting.range.minimum ? setting.range.minimum : 1);
  }
  open(moved);
  for (const Setting& setting : SettingCatalogue::all()) {
    const NimbraConfig before = config();
    auto* reset = control(setting).findChild<GlyphButton*>();
    ASSERT_TRUE(reset->isEnabled()) << setting.key;
    reset->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(reset->hasFocus());
    key(*reset, Qt::Key_Space);
    EXPECT_THAT(differingKeys(before, config()), ElementsAre(std::string(setting.key)));
    EXPECT_FALSE(reset->isEnabled()) << setting.key;
    EXPECT_TRUE(control(setting).isAncestorOf(QApplication::focusWidget())) << setting.key << " lost the focus";
  }
  EXPECT_EQ(config(), NimbraConfig());
}

TEST_F(SettingsWindowTest, ADoubleClickOnTheSliderOrItsTitleIsTheDefault) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    if (kindOf(setting) != SettingKind::number) continue;
    SettingControl& moved = control(setting);
    for (QWidget* clicked :
         {static_cast<QWidget*>(&slider(moved)), static_cast<QWidget*>(moved.findChild<QLabel*>())}) {
      moveByKeyboard(moved, config());
      ASSERT_NE(config(), NimbraConfig()) << setting.key;
      QTest::mouseDClick(clicked, Qt::LeftButton);
      EXPECT_EQ(config(), NimbraConfig()) << setting.key;
    }
  }
}

TEST_F(SettingsWindowTest, ShiftAndControlMoveByFineSteps) {
  open();
  for (const auto modifier : {Qt::ShiftModifier, Qt::ControlModifier}) {
    SettingControl& exposure = control("exposure");
    key(slider(exposure), Qt::Key_Right, modifier);
    EXPECT_DOUBLE_EQ(config().exposure, 1.26);
    key(field(exposure), Qt::Key_Down, modifier);
    EXPECT_DOUBLE_EQ(config().exposure, 1.25);
  }
  key(slider(control("exposure")), Qt::Key_Home);
  EXPECT_EQ(config().exposure, 0);
  key(slider(control("exposure")), Qt::Key_End);
  EXPECT_EQ(config().exposure, 6);
}

/// The middle of a slider's handle.
QPoint handleOf(const QSlider& slider) {
  QStyleOptionSlider option;
  option.initFrom(&slider);
  option.orientation = Qt::Horizontal;
  option.maximum = slider.maximum();
  option.sliderPosition = option.sliderValue = slider.value();
  return slider.style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider).center();
}

TEST_F(SettingsWindowTest, ADragIsOneStepOfUndo) {
  open();
  const auto drag = [&](SettingSlider& dragged) {
    const QPoint start = handleOf(dragged);
    std::vector<double> values;
    QTest::mousePress(&dragged, Qt::LeftButton, {}, start);
    ASSERT_TRUE(dragged.isSliderDown());
    for (int i = 1; i < 8; ++i) {
      settings.now += 0.1;
      QTest::mouseMove(&dragged, start + QPoint(6 * i, 0));
      values.push_back(valueIn(config(), *SettingCatalogue::find(dragged.parent()->objectName().toStdString())));
    }
    QTest::mouseRelease(&dragged, Qt::LeftButton, {}, start + QPoint(42, 0));
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()) && values.front() < values.back());
  };
  drag(slider(control("exposure")));
  const NimbraConfig one = config();
  settings.now += 5;
  drag(slider(control("saturation")));
  const NimbraConfig two = config();
  EXPECT_THAT(differingKeys(NimbraConfig(), two), ElementsAre("exposure", "saturation"));
  key(*QApplication::focusWidget(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config(), one);
  key(*QApplication::focusWidget(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config(), NimbraConfig());
  key(*QApplication::focusWidget(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(config(), one);
  key(*QApplication::focusWidget(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(config(), two);
}

TEST_F(SettingsWindowTest, UndoIsOfferedWhenThereIsSomethingToTakeBack) {
  open();
  const auto buttons = window->findChildren<GlyphButton*>(QString(), Qt::FindDirectChildrenOnly);
  ASSERT_EQ(buttons.size(), 2);
  GlyphButton& undo = *buttons[0];
  GlyphButton& redo = *buttons[1];
  EXPECT_FALSE(undo.isEnabled() || redo.isEnabled());
  moveByKeyboard(control("hdrGlow"), config());
  EXPECT_TRUE(undo.isEnabled());
  undo.click();
  EXPECT_EQ(config(), NimbraConfig());
  EXPECT_FALSE(undo.isEnabled());
  redo.click();
  EXPECT_FALSE(config().hdrGlow);
  EXPECT_FALSE(redo.isEnabled());
}

TEST_F(SettingsWindowTest, UndoTakesTypingBackFirstAndThenTheSetting) {
  open();
  ValueField& exposure = field(control("exposure"));
  key(exposure, Qt::Key_Up);
  ASSERT_NE(config(), NimbraConfig());
  exposure.selectAll();
  QTest::keyClicks(&exposure, "3");
  key(exposure, Qt::Key_Escape);
  EXPECT_TRUE(window->isVisible());
  EXPECT_NE(exposure.text(), "3");
  exposure.setFocus();
  key(exposure, Qt::Key_Up);
  key(exposure, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config(), NimbraConfig());
  auto& search = *window->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
  moveByKeyboard(control("opacity"), config());
  search.setFocus();
  key(search, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config(), NimbraConfig());
}

TEST_F(SettingsWindowTest, ShowsAtOnceWhatOthersChange) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    SettingControl& seen = control(setting);
    NimbraConfig others;
    const double value =
        kindOf(setting) == SettingKind::number ? setting.range.maximum : (valueIn(others, setting) == 0 ? 1 : 0);
    setValue(others, setting, value);
    settings.store.setConfig(others);
    if (kindOf(setting) == SettingKind::number) {
      EXPECT_EQ(slider(seen).value(), slider(seen).maximum()) << setting.key;
      EXPECT_EQ(field(seen).value(), value) << setting.key;
    } else if (kindOf(setting) == SettingKind::toggle) {
      EXPECT_EQ(static_cast<QAbstractButton*>(seen.focusProxy())->isChecked(), value != 0) << setting.key;
    } else {
      EXPECT_EQ(seen.findChild<QButtonGroup*>()->checkedId(), static_cast<int>(value)) << setting.key;
    }
    EXPECT_TRUE(seen.findChild<GlyphButton*>()->isEnabled()) << setting.key;
    EXPECT_EQ(config(), others) << setting.key << " was written back";
  }
}

TEST_F(SettingsWindowTest, WhatIsHeldOrTypedIsNotFoughtWith) {
  open();
  SettingControl& exposure = control("exposure");
  SettingSlider& held = slider(exposure);
  const QPoint start = handleOf(held);
  QTest::mousePress(&held, Qt::LeftButton, {}, start);
  QTest::mouseMove(&held, start + QPoint(10, 0));
  const int place = held.value();
  NimbraConfig others = config();
  others.exposure = 0;
  settings.store.setConfig(others);
  EXPECT_EQ(held.value(), place);
  QTest::mouseRelease(&held, Qt::LeftButton, {}, start + QPoint(10, 0));
  EXPECT_EQ(held.value(), 0) << "the handle shows the record once it is let go";
  EXPECT_EQ(config().exposure, 0);

  ValueField& typed = field(exposure);
  typed.setFocus();
  typed.selectAll();
  QTest::keyClicks(&typed, "2");
  others.exposure = 3;
  settings.store.setConfig(others);
  EXPECT_EQ(typed.text(), "2");
  key(typed, Qt::Key_Return);
  EXPECT_EQ(config().exposure, 2);
}

TEST_F(SettingsWindowTest, TheWheelScrollsAndChangesNothing) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    SettingControl& under = control(setting);
    for (QWidget* part : under.findChildren<QWidget*>()) {
      if (part->hasFocus()) part->clearFocus();
      const QPointF at = part->rect().center();
      QWheelEvent turned(at, part->mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, {}, Qt::NoScrollPhase, false);
      QApplication::sendEvent(part, &turned);
      ASSERT_EQ(config(), NimbraConfig()) << setting.key;
    }
  }
  SettingSlider& focused = slider(control("exposure"));
  focused.setFocus();
  const QPointF at = focused.rect().center();
  QWheelEvent turned(at, focused.mapToGlobal(at), {}, QPoint(0, 120), Qt::NoButton, {}, Qt::NoScrollPhase, false);
  QApplication::sendEvent(&focused, &turned);
  EXPECT_GT(config().exposure, NimbraConfig().exposure);
}

TEST_F(SettingsWindowTest, ValuesOutOfRangeAreShownAndLeftAlone) {
  open(absurdConfig());
  for (int tab = 0; tab < settingTabCount; ++tab) {
    window->showTab(static_cast<SettingTab>(tab));
    QTest::qWait(0);
    for (int i = 0; i < 40; ++i) QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  EXPECT_EQ(config(), absurdConfig());
  EXPECT_EQ(field(control("exposure")).text(), "50.00");
  EXPECT_EQ(field(control("pressureIterations")).text(), "-7");
  EXPECT_EQ(field(control("saturation")).text().left(8), "1.234567");
  key(field(control("exposure")), Qt::Key_Return);
  EXPECT_EQ(config(), absurdConfig()) << "nothing was typed";
  key(field(control("exposure")), Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_DOUBLE_EQ(config().exposure, 5.99);
  key(slider(control("glowAmount")), Qt::Key_End);
  EXPECT_EQ(config().glowAmount, 4);
  ValueField& latitude = field(control("weatherLatitude"));
  latitude.setFocus();
  latitude.selectAll();
  QTest::keyClicks(&latitude, "90.5");
  key(latitude, Qt::Key_Return);
  EXPECT_EQ(config().weatherLatitude, 90);
  EXPECT_EQ(latitude.text(), QString::fromUtf8("90.0000°"));
}

TEST_F(SettingsWindowTest, SearchShowsTheControlsThemselves) {
  open();
  auto& search = *window->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
  window->showTab(SettingTab::system);
  key(*window, Qt::Key_F, Qt::ControlModifier);
  ASSERT_TRUE(search.hasFocus());
  QTest::keyClicks(&search, "hueSpread");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), ElementsAre("hueSpread", "hueSpreadScale", "hueSpreadDrift"));
  key(search, Qt::Key_Down);
  EXPECT_TRUE(shown("hueSpread").isAncestorOf(QApplication::focusWidget()));
  key(*QApplication::focusWidget(), Qt::Key_End);
  EXPECT_EQ(config().hueSpread, 0.5);
  key(*QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_TRUE(search.text().isEmpty());
  EXPECT_THAT(shownKeys(), Contains("framesPerSecond")) << "back on the tab";
  EXPECT_TRUE(window->isVisible());
  key(*QApplication::focusWidget(), Qt::Key_Escape);
  EXPECT_FALSE(window->isVisible());
}

TEST_F(SettingsWindowTest, SearchSaysWhenThereIsNothing) {
  open();
  window->search("xyzzy");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), testing::IsEmpty());
  bool told = false;
  for (const QLabel* label : window->findChildren<QLabel*>()) told |= label->isVisible() && !label->text().isEmpty();
  EXPECT_TRUE(told);
  window->search("   ");
  EXPECT_THAT(shownKeys(), Contains("exposure"));
}

TEST_F(SettingsWindowTest, CardsStandInTheirPlaceAreMadeLateAndAreFound) {
  settings.store.setConfig({});
  window = std::make_unique<SettingsWindow>(settings.editor);
  int made = 0;
  const auto card = [&made](const char* name) {
    return [name, &made]() -> QWidget* {
      ++made;
      auto* label = new QLabel(QString::fromUtf8(name));
      label->setObjectName(QString::fromUtf8(name));
      return label;
    };
  };
  window->addCard({SettingTab::motion, "Flow", "Second", "zebra", card("second")});
  window->addCard({SettingTab::motion, nullptr, "First", {}, card("first")});
  QSignalSpy seen(window.get(), &SettingsWindow::visibleChanged);
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  EXPECT_EQ(made, 0);
  window->search("zebra");
  QTest::qWait(0);
  QAbstractButton* link = nullptr;
  for (auto* button : window->findChildren<QAbstractButton*>()) {
    if (button->isVisible() && button->accessibleName().contains("Second")) link = button;
  }
  ASSERT_NE(link, nullptr);
  link->click();
  QTest::qWait(10);
  EXPECT_EQ(made, 2);
  auto* first = window->findChild<QLabel*>("first");
  auto* second = window->findChild<QLabel*>("second");
  EXPECT_FALSE(second->visibleRegion().isEmpty()) << "not scrolled to";
  QWidget* page = second->parentWidget();
  const auto top = [page](const QWidget& widget) { return widget.mapTo(page, QPoint()).y(); };
  EXPECT_LT(top(*first), top(shown("tempo")));
  EXPECT_GT(top(*second), top(shown("buoyancy")));
  EXPECT_LT(top(*second), top(shown("curlStrength")));
  window->hide();
  ASSERT_EQ(seen.size(), 2);
  EXPECT_TRUE(seen[0][0].toBool());
  EXPECT_FALSE(seen[1][0].toBool());
}

TEST_F(SettingsWindowTest, TheTabKeyGoesThroughEverythingAndScrollsToIt) {
  NimbraConfig moved;
  for (const Setting& setting : SettingCatalogue::all()) setValue(moved, setting, setting.range.minimum);
  open(moved);
  for (int tab = 0; tab < settingTabCount; ++tab) {
    window->showTab(static_cast<SettingTab>(tab));
    QTest::qWait(0);
    std::vector<std::string> reached;
    QWidget* start = QApplication::focusWidget();
    int stops = 0;
    do {
      key(*QApplication::focusWidget(), Qt::Key_Tab);
      QWidget* now = QApplication::focusWidget();
      const QRegion seen = now->visibleRegion();
      EXPECT_GE(seen.boundingRect().height(), now->height() - 1) << "not scrolled to";
      QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(now);
      EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty()) << now->metaObject()->className();
      for (QWidget* up = now; up != nullptr; up = up->parentWidget()) {
        const auto* control = qobject_cast<SettingControl*>(up);
        if (control == nullptr) continue;
        const std::string name(control->setting().key);
        if (reached.empty() || reached.back() != name) reached.push_back(name);
      }
    } while (QApplication::focusWidget() != start && ++stops < 200);
    EXPECT_EQ(reached, shownKeys()) << "tab " << tab;
  }
  key(*QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_THAT(shownKeys(), Contains("exposure")) << "from the last tab to the first";
  key(*QApplication::focusWidget(), Qt::Key_PageUp, Qt::ControlModifier);
  EXPECT_THAT(shownKeys(), Contains("enabled"));
}

TEST_F(SettingsWindowTest, APopupClosesWhenItIsLeftButNotForItsOwnDialogs) {
  window = std::make_unique<SettingsWindow>(settings.editor, SettingsWindow::Kind::popup);
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  EXPECT_TRUE(window->windowFlags() & Qt::FramelessWindowHint);
  QWidget dialog(window.get(), Qt::Dialog);
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  QTest::qWait(20);
  EXPECT_TRUE(window->isVisible());
  QWidget other;
  other.show();
  other.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  EXPECT_TRUE(QTest::qWaitFor([this] { return !window->isVisible(); }));
}

TEST_F(SettingsWindowTest, RandomKeysAndClicksDoNoHarm) {
  open(absurdConfig());
  std::mt19937 random(20240607);
  const auto below = [&random](std::size_t count) { return random() % count; };
  const std::vector<Qt::Key> keys{Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Left, Qt::Key_Right,     Qt::Key_Up,
                                  Qt::Key_Down,  Qt::Key_Home,    Qt::Key_End,  Qt::Key_PageUp,    Qt::Key_PageDown,
                                  Qt::Key_Space, Qt::Key_Return,  Qt::Key_9,    Qt::Key_Backspace, Qt::Key_Minus,
                                  Qt::Key_E,     Qt::Key_Period,  Qt::Key_Z,    Qt::Key_F,         Qt::Key_Escape};
  const std::vector<Qt::KeyboardModifiers> modifiers{
      {}, {}, {}, Qt::ControlModifier, Qt::ShiftModifier, Qt::ControlModifier | Qt::ShiftModifier};
  for (int step = 0; step < 800; ++step) {
    settings.now += static_cast<double>(below(20)) / 10;
    if (!window->isVisible()) window->show();
    QWidget* focus = QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : window.get();
    const QPoint at(static_cast<int>(below(400)), static_cast<int>(below(520)));
    QWidget* under = window->childAt(at) != nullptr ? window->childAt(at) : window.get();
    const QPoint there = under->mapFrom(window.get(), at);
    switch (below(6)) {
      case 0:
        QTest::mouseClick(under, Qt::LeftButton, {}, there);
        break;
      case 1:
        QTest::mouseDClick(under, Qt::LeftButton, {}, there);
        break;
      case 2:
        QTest::mousePress(under, Qt::LeftButton, {}, there);
        QTest::mouseMove(under, there + QPoint(static_cast<int>(below(80)) - 40, 0));
        if (below(4) == 0) settings.store.setConfig(below(2) == 0 ? absurdConfig() : NimbraConfig());
        QTest::mouseRelease(under, Qt::LeftButton, {}, there);
        break;
      default:
        QTest::keyClick(focus, keys[below(keys.size())], modifiers[below(modifiers.size())]);
    }
    NimbraConfig storable = config();
    // What the absurd record began with can't be stored at all; the rest must be.
    if (!std::isfinite(storable.contrast)) storable.contrast = 1;
    if (!std::isfinite(storable.flowSpeed)) storable.flowSpeed = 1;
    const auto bytes = encodeSettings(storable);
    ASSERT_TRUE(bytes) << "step " << step;
    ASSERT_EQ(*decodeSettings(*bytes), storable) << "step " << step;
  }
}

}  // namespace
}  // namespace veloria
