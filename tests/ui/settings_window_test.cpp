// The settings window with the program's own cards in it, used by keyboard and mouse.

#include "ui/window/SettingsWindow.h"

#include <QAccessible>
#include <QButtonGroup>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <limits>

#include "../support/ManualTimers.h"
#include "../system/SystemFakes.h"
#include "DarkPalette.h"
#include "UiFixture.h"
#include "ui/cards/AgentCard.h"
#include "ui/cards/CommandLineCard.h"
#include "ui/cards/DriveModeChooser.h"
#include "ui/cards/GlassCard.h"
#include "ui/cards/LoginItemCard.h"
#include "ui/cards/PaletteEditor.h"
#include "ui/cards/PaletteGallery.h"
#include "ui/cards/PresetGallery.h"
#include "ui/cards/ReadoutCard.h"
#include "ui/cards/SystemFactsCard.h"
#include "ui/controls/GlyphButton.h"
#include "ui/controls/NumberWidgets.h"
#include "ui/controls/SettingControl.h"
#include "ui/controls/SettingLabel.h"
#include "ui/script/ScriptCard.h"

namespace veloria::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;

class SettingsWindowTest : public UiFixture {
 protected:
  void open(const NimbraConfig& config = {}) {
    store_.setConfig(config);
    if (!window_) window_ = std::make_unique<SettingsWindow>(editor_);
    window_->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  }

  /// The control of a setting, on its tab, scrolled to.
  SettingControl& control(const Setting& setting) {
    window_->showTab(setting.tab);
    QTest::qWait(0);
    for (SettingControl* control : window_->findChildren<SettingControl*>()) {
      if (&control->setting() != &setting || !control->isVisible()) continue;
      for (QWidget* up = control->parentWidget(); up != nullptr; up = up->parentWidget()) {
        if (auto* page = qobject_cast<QScrollArea*>(up)) page->ensureWidgetVisible(control);
      }
      return *control;
    }
    throw std::runtime_error("no control of " + std::string(setting.key) + " is seen");
  }
  SettingControl& control(std::string_view key) { return control(*SettingCatalogue::find(key)); }
  static SettingSlider& slider(SettingControl& control) { return *control.findChild<SettingSlider*>(); }
  static ValueField& field(SettingControl& control) { return *control.findChild<ValueField*>(); }
  QLineEdit& search() { return *window_->findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly); }

  std::vector<std::string> shownKeys() {
    std::vector<std::string> keys;
    for (const Setting& setting : SettingCatalogue::all()) {
      for (const SettingControl* control : window_->findChildren<SettingControl*>()) {
        if (&control->setting() == &setting && control->isVisible()) keys.emplace_back(setting.key);
      }
    }
    return keys;
  }

  static void key(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&widget, key, modifiers);
  }
  static void keyToFocus(Qt::Key k, Qt::KeyboardModifiers modifiers = {}) {
    key(*QApplication::focusWidget(), k, modifiers);
  }
  static void enter(ValueField& field, const QString& text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
  }
  static void turnWheel(QWidget& widget, int by) {
    const QPointF at = widget.rect().center();
    QWheelEvent turned(at, widget.mapToGlobal(at), {}, QPoint(0, by), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &turned);
  }

  std::unique_ptr<SettingsWindow> window_;
};

/// Moves a control by the keyboard, away from where it is.
void moveByKeyboard(SettingControl& control, const NimbraConfig& config) {
  const Setting& setting = control.setting();
  control.setFocus();
  const double value = valueIn(config, setting);
  const Qt::Key keys[] = {Qt::Key_Space, value >= setting.range.maximum ? Qt::Key_Left : Qt::Key_Right,
                          value == 0 ? Qt::Key_Down : Qt::Key_Up};
  QTest::keyClick(QApplication::focusWidget(), keys[static_cast<std::size_t>(kindOf(setting))]);
}

/// Clicks the far end of a slider, the title of a choice that is not chosen, or the title of a switch.
void moveByMouse(SettingControl& control) {
  if (auto* slider = control.findChild<SettingSlider*>()) {
    const bool high = slider->value() > slider->maximum() / 2;
    const QPoint aim(slider->width() * (high ? 1 : 9) / 10, slider->height() / 2);
    return QTest::mouseClick(slider, Qt::LeftButton, {}, aim);
  }
  for (auto* label : control.findChildren<SettingLabel*>()) {
    const auto* button = qobject_cast<QAbstractButton*>(label->buddy());
    if (button == nullptr || (kindOf(control.setting()) == SettingKind::choice && button->isChecked())) continue;
    return QTest::mouseClick(label, Qt::LeftButton);
  }
}

TEST_F(SettingsWindowTest, EachControlMovesItsFieldOnlyAndGoesBackToItsDefault) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    SCOPED_TRACE(setting.key);
    SettingControl& moved = control(setting);
    const auto expectMoved = [&] {
      EXPECT_THAT(differingKeys(config()), ElementsAre(std::string(setting.key)));
      NimbraConfig held = config();
      setValue(held, setting, valueIn(config(), setting));
      EXPECT_EQ(held, config()) << "out of range";
    };
    moveByKeyboard(moved, config());
    expectMoved();
    auto* reset = moved.findChild<GlyphButton*>();
    ASSERT_TRUE(reset->isEnabled());
    reset->setFocus(Qt::TabFocusReason);
    key(*reset, Qt::Key_Space);
    EXPECT_EQ(config(), NimbraConfig());
    EXPECT_FALSE(reset->isEnabled());
    EXPECT_TRUE(moved.isAncestorOf(QApplication::focusWidget())) << "lost the focus";
    moveByMouse(moved);
    expectMoved();
    store_.setConfig({});
    if (kindOf(setting) != SettingKind::number) continue;

    for (QWidget* clicked :
         {static_cast<QWidget*>(&slider(moved)), static_cast<QWidget*>(moved.findChild<QLabel*>())}) {
      moveByKeyboard(moved, config());
      EXPECT_NE(config(), NimbraConfig());
      QTest::mouseDClick(clicked, Qt::LeftButton);
      EXPECT_EQ(config(), NimbraConfig());
    }
    ValueField& typed = field(moved);
    enter(typed, typed.locale().toString(setting.range.maximum, 'f', setting.range.decimals));
    EXPECT_EQ(config(), NimbraConfig()) << "changed before Enter";
    key(typed, Qt::Key_Return);
    expectMoved();
    EXPECT_EQ(valueIn(config(), setting), setting.range.maximum);
    store_.setConfig({});
  }
}

TEST_F(SettingsWindowTest, EachControlShowsAtOnceWhatOthersChangeAndIgnoresTheWheel) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    SCOPED_TRACE(setting.key);
    SettingControl& seen = control(setting);
    NimbraConfig others;
    const bool number = kindOf(setting) == SettingKind::number;
    const double value = number ? setting.range.maximum : (valueIn(others, setting) == 0 ? 1 : 0);
    setValue(others, setting, value);
    store_.setConfig(others);
    if (number) {
      EXPECT_EQ(slider(seen).value(), slider(seen).maximum());
      EXPECT_EQ(field(seen).value(), value);
    } else if (kindOf(setting) == SettingKind::toggle) {
      EXPECT_EQ(static_cast<QAbstractButton*>(seen.focusProxy())->isChecked(), value != 0);
    } else {
      EXPECT_EQ(seen.findChild<QButtonGroup*>()->checkedId(), static_cast<int>(value));
    }
    EXPECT_TRUE(seen.findChild<GlyphButton*>()->isEnabled());
    for (QWidget* part : seen.findChildren<QWidget*>()) {
      if (part->hasFocus()) part->clearFocus();
      turnWheel(*part, -120);
    }
    EXPECT_EQ(config(), others) << "written back";
  }
  open();
  SettingSlider& focused = slider(control("exposure"));
  focused.setFocus();
  turnWheel(focused, 120);
  EXPECT_GT(config().exposure, NimbraConfig().exposure);
}

TEST_F(SettingsWindowTest, KeysMoveANumberByStepsOfEachSize) {
  open();
  SettingControl& exposure = control("exposure");
  const auto after = [&](double travel) { return movedBy(exposure.setting().range, 1.25, travel); };
  const std::tuple<Qt::Key, Qt::KeyboardModifier, double, bool> keys[] = {
      // whether the field moves as well; there the other keys move the cursor
      {Qt::Key_Down, Qt::ControlModifier, 1.24, true},
      {Qt::Key_Up, Qt::ShiftModifier, 1.26, true},
      {Qt::Key_Up, Qt::NoModifier, after(0.02), true},
      {Qt::Key_Down, Qt::NoModifier, after(-0.02), true},
      {Qt::Key_PageUp, Qt::NoModifier, after(0.1), true},
      {Qt::Key_PageDown, Qt::NoModifier, after(-0.1), true},
      {Qt::Key_Right, Qt::NoModifier, after(0.02), false},
      {Qt::Key_Left, Qt::NoModifier, after(-0.02), false},
      {Qt::Key_Home, Qt::NoModifier, 0, false},
      {Qt::Key_End, Qt::NoModifier, 6, false}};
  for (const auto& [pressed, modifier, value, alsoField] : keys) {
    for (const bool inField : {false, alsoField}) {
      store_.setConfig({});
      inField ? key(field(exposure), pressed, modifier) : key(slider(exposure), pressed, modifier);
      EXPECT_DOUBLE_EQ(config().exposure, value) << pressed;
    }
  }
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

TEST_F(SettingsWindowTest, ADragIsOneStepOfUndoAndIsNotFoughtWith) {
  open();
  SettingSlider& dragged = slider(control("exposure"));
  const QPoint start = handleOf(dragged);
  const auto dragTo = [&](int x) {
    now_ += 0.1;
    QTest::mouseMove(&dragged, start + QPoint(x, 0));
    return config().exposure;
  };
  QTest::mousePress(&dragged, Qt::LeftButton, {}, start);
  const double little = dragTo(10);
  EXPECT_GT(little, 1.25);
  EXPECT_GT(dragTo(40), little);
  const int place = dragged.value();
  NimbraConfig others;
  others.exposure = 0;
  store_.setConfig(others);
  EXPECT_EQ(dragged.value(), place);
  QTest::mouseRelease(&dragged, Qt::LeftButton, {}, start + QPoint(40, 0));
  EXPECT_EQ(dragged.value(), 0) << "the handle shows the record once it is let go";
  EXPECT_EQ(config().exposure, 0);
  keyToFocus(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config(), NimbraConfig());
  keyToFocus(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_GT(config().exposure, little);
}

TEST_F(SettingsWindowTest, UndoAndRedoTakeTypingBackFirstAndThenTheSetting) {
  open();
  const auto buttons = window_->findChildren<GlyphButton*>(QString(), Qt::FindDirectChildrenOnly);
  GlyphButton& undo = *buttons.at(0);
  GlyphButton& redo = *buttons.at(1);
  EXPECT_FALSE(undo.isEnabled() || redo.isEnabled());
  moveByKeyboard(control("hdrGlow"), config());
  undo.click();
  EXPECT_TRUE(config().hdrGlow && !undo.isEnabled());
  redo.click();
  EXPECT_FALSE(config().hdrGlow || redo.isEnabled());
  undo.click();

  ValueField& exposure = field(control("exposure"));
  exposure.setFocus();
  key(exposure, Qt::Key_Up);
  enter(exposure, "3");
  NimbraConfig others;
  others.exposure = 5;
  store_.setConfig(others);
  EXPECT_EQ(exposure.text(), "3") << "what is being typed is left alone";
  key(exposure, Qt::Key_Escape);
  EXPECT_NE(exposure.text(), "3");
  for (QWidget* focus : {static_cast<QWidget*>(&exposure), static_cast<QWidget*>(&search())}) {
    focus->setFocus();
    key(*focus, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(config(), NimbraConfig());
    key(*focus, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NE(config(), NimbraConfig());
  }
}

TEST_F(SettingsWindowTest, ValuesOutOfRangeAreShownAndLeftAloneUntilTheyAreChanged) {
  NimbraConfig absurd;
  absurd.exposure = 50;
  absurd.opacity = -3;
  absurd.glowAmount = 1e300;
  absurd.framesPerSecond = std::numeric_limits<std::int64_t>::max();
  absurd.pressureIterations = -7;
  absurd.contrast = std::numeric_limits<double>::infinity();
  absurd.saturation = 1.23456789012345;
  open(absurd);
  const std::pair<const char*, const char*> texts[] = {
      {"exposure", "50.00"}, {"pressureIterations", "-7"}, {"saturation", "1.2345678901"}, {"opacity", "-3.00"}};
  for (const auto& [name, text] : texts) {
    EXPECT_EQ(field(control(name)).text(), text);
    field(control(name)).setFocus();
    keyToFocus(Qt::Key_Return);  // nothing was typed
    keyToFocus(Qt::Key_Tab);
  }
  EXPECT_EQ(config(), absurd);
  key(field(control("exposure")), Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_DOUBLE_EQ(config().exposure, 5.99);
  key(slider(control("glowAmount")), Qt::Key_End);
  EXPECT_EQ(config().glowAmount, 4);
  ValueField& latitude = field(control("weatherLatitude"));
  enter(latitude, "90.5");
  key(latitude, Qt::Key_Return);
  EXPECT_EQ(config().weatherLatitude, 90);
  EXPECT_EQ(latitude.text(), QString::fromUtf8("90.0000°"));
}

TEST_F(SettingsWindowTest, SearchShowsTheControlsThemselvesOrSaysThatThereAreNone) {
  open();
  window_->showTab(SettingTab::system);
  key(*window_, Qt::Key_F, Qt::ControlModifier);
  ASSERT_TRUE(search().hasFocus());
  QTest::keyClicks(&search(), "hueSpread");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), ElementsAre("hueSpread", "hueSpreadScale", "hueSpreadDrift"));
  key(search(), Qt::Key_Down);
  keyToFocus(Qt::Key_End);
  EXPECT_EQ(config().hueSpread, 0.5);
  window_->search("xyzzy");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), testing::IsEmpty());
  EXPECT_TRUE(sentences(*window_).contains("Nothing found."));
  keyToFocus(Qt::Key_Escape);
  EXPECT_TRUE(search().text().isEmpty());
  EXPECT_THAT(shownKeys(), Contains("framesPerSecond")) << "back on the tab";
  window_->search("   ");
  EXPECT_THAT(shownKeys(), Contains("framesPerSecond"));
  keyToFocus(Qt::Key_Escape);
  EXPECT_TRUE(window_->isVisible());
  keyToFocus(Qt::Key_Escape);
  EXPECT_FALSE(window_->isVisible());
}

TEST_F(SettingsWindowTest, CardsStandInTheirPlaceAreMadeLateAndAreFound) {
  window_ = std::make_unique<SettingsWindow>(editor_);
  int made = 0;
  const auto card = [&made](const char* name) {
    return [name, &made]() -> QWidget* {
      ++made;
      auto* label = new QLabel(name);
      label->setObjectName(name);
      return label;
    };
  };
  window_->addCard({SettingTab::motion, "Flow", "Second", "zebra", card("second")});
  window_->addCard({SettingTab::motion, nullptr, "First", {}, card("first")});
  QSignalSpy seen(window_.get(), &SettingsWindow::visibleChanged);
  open();
  EXPECT_EQ(made, 0);
  window_->search("zebra");
  QTest::qWait(0);
  for (auto* button : window_->findChildren<QPushButton*>()) {
    if (button->isVisible() && button->accessibleName().contains("Second")) button->click();
  }
  QTest::qWait(10);
  EXPECT_EQ(made, 2);
  auto& second = child<QLabel>(*window_, "second");
  EXPECT_FALSE(second.visibleRegion().isEmpty()) << "not scrolled to";
  const auto top = [&](const QWidget& widget) { return widget.mapTo(second.parentWidget(), QPoint()).y(); };
  EXPECT_LT(top(child<QLabel>(*window_, "first")), top(control("tempo")));
  EXPECT_GT(top(second), top(control("buoyancy")));
  EXPECT_LT(top(second), top(control("curlStrength")));
  window_->hide();
  ASSERT_EQ(seen.size(), 2);
  EXPECT_TRUE(seen[0][0].toBool());
  EXPECT_FALSE(seen[1][0].toBool());
}

TEST_F(SettingsWindowTest, APopupClosesWhenItIsLeftButNotForItsOwnDialogs) {
  window_ = std::make_unique<SettingsWindow>(editor_, SettingsWindow::Kind::popup);
  open();
  EXPECT_TRUE(window_->windowFlags() & Qt::FramelessWindowHint);
  QWidget dialog(window_.get(), Qt::Dialog);
  dialog.show();
  dialog.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  QTest::qWait(20);
  EXPECT_TRUE(window_->isVisible());
  QWidget other;
  other.show();
  other.activateWindow();
  EXPECT_TRUE(QTest::qWaitFor([this] { return !window_->isVisible(); }));
}

/// With all cards, each with long texts on it.
class WholeWindowTest : public SettingsWindowTest {
 protected:
  WholeWindowTest() {
    const std::string path = "/a/path/without/a/single/space/in/it/that/is/longer/than/the/window/is/wide";
    readouts_ = {path, path, path, path, path, path, path, path, path, path, path};
    byHand_.manualCommand = "sudo ln -sf '" + path + "' /usr/local/bin/nimbra";
    system_.now = {true, true, 1};
    state_.refresh();
    window_ = std::make_unique<SettingsWindow>(editor_);
    auto* ticker = new ReadoutTicker(window_.get(), [this] { return readouts_; });
    const auto add = [this](SettingTab tab, std::function<QWidget*()> make) {
      window_->addCard({tab, nullptr, "A card", {}, std::move(make)});
    };
    add(SettingTab::look, [this] { return new PresetGallery(editor_, pictures_); });
    add(SettingTab::look, [this, ticker] {
      auto* card = new PaletteGallery(editor_);
      card->follow(*ticker);
      return card;
    });
    add(SettingTab::look, [this] { return new PaletteEditor(editor_); });
    add(SettingTab::look, [this] { return new GlassCard(editor_); });
    add(SettingTab::bar, [ticker] { return ReadoutCard::makeNotch(*ticker); });
    add(SettingTab::pointer, [ticker] { return ReadoutCard::makePointer(*ticker); });
    add(SettingTab::drive, [this] { return new DriveModeChooser(editor_); });
    add(SettingTab::drive, [ticker] { return ReadoutCard::makeAudio(*ticker); });
    add(SettingTab::drive, [ticker] { return ReadoutCard::makeWeather(*ticker); });
    add(SettingTab::drive, [] { return new AgentCard; });
    add(SettingTab::drive, [this] { return new ScriptCard(editor_, draft_); });
    add(SettingTab::system, [ticker] { return ReadoutCard::makeStatus(*ticker); });
    add(SettingTab::system, [this] { return new LoginItemCard(loginItem_); });
    add(SettingTab::system, [this] {
      return new CommandLineCard({[this] { return byHand_; }, {}, {}}, "get it from a package");
    });
    add(SettingTab::system, [this] { return new SystemFactsCard(state_, {SystemPane::appearance, true}); });
  }
  void openWhole() {
    NimbraConfig config;
    config.visualizer = Visualizer::wind;
    config.customScript = "# mine\nset glow 2\nbind glw = 1";
    config.matchWallpaper = true;
    open(choose(config, LookPreset::all()[3]));
  }
  void showTab(int tab) {
    window_->showTab(static_cast<SettingTab>(tab));
    QThreadPool::globalInstance()->waitForDone();  // what the cards look up
    QTest::qWait(20);
  }

  void expectNothingClipped() {
    for (const QWidget* widget : window_->findChildren<QWidget*>()) {
      const QWidget* parent = widget->parentWidget();
      if (!widget->isVisible() || parent->inherits("QAbstractScrollArea") || parent->inherits("QLineEdit")) continue;
      const QString who = widget->metaObject()->className() + widget->accessibleName() + widget->objectName();
      EXPECT_LE(widget->mapTo(window_.get(), QPoint(widget->width(), 0)).x(), window_->width()) << who.toStdString();
      const auto* label = qobject_cast<const QLabel*>(widget);
      const auto* button = qobject_cast<const QAbstractButton*>(widget);
      if (label == nullptr && button == nullptr) continue;
      const int needed = widget->hasHeightForWidth() ? widget->heightForWidth(widget->width())
                                                     : (label ? label->sizeHint() : button->minimumSizeHint()).height();
      EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << who.toStdString();
      EXPECT_GE(widget->height(), needed) << who.toStdString() << (label ? label->text().toStdString() : "");
    }
    for (const QScrollArea* page : window_->findChildren<QScrollArea*>()) {
      EXPECT_TRUE(!page->isVisible() || page->widget()->width() <= page->viewport()->width()) << "scrolls sideways";
    }
  }

  Readouts readouts_;
  CommandLineToolState byHand_;
  ScriptDraft draft_;
  FakeLogin login_;
  LoginItem loginItem_{login_};
  FakeSystem system_;
  ManualTimers timers_;
  SystemState state_{system_, timers_};
  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
};

TEST_F(WholeWindowTest, NothingIsClippedAndNothingScrollsSideways) {
  const QFont font = QApplication::font();
  const std::pair<double, int> cases[] = {{1, 360}, {1, 400}, {2, 400}};
  for (const auto& [scale, width] : cases) {
    SCOPED_TRACE(scale * width);
    QFont scaled = font;
    scaled.setPointSizeF(font.pointSizeF() * scale);
    QApplication::setFont(scaled);
    openWhole();
    window_->resize(width, 520);
    for (int tab = 0; tab < settingTabCount; ++tab) {
      SCOPED_TRACE(tab);
      showTab(tab);
      EXPECT_EQ(window_->width(), width);
      expectNothingClipped();
    }
    window_->search(QStringLiteral("e"));
    QTest::qWait(20);
    EXPECT_GT(shownKeys().size(), 60U);
    expectNothingClipped();
  }
  QApplication::setFont(font);
}

TEST_F(WholeWindowTest, TheTabKeyGoesThroughEverythingScrollsToItAndAllHasANameAndCanBeRead) {
  const auto luminance = [](const QColor& c) {  // WCAG 2
    const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
  };
  const QPalette light = QApplication::palette();
  openWhole();
  for (int tab = 0; tab < settingTabCount; ++tab) {
    SCOPED_TRACE(tab);
    showTab(tab);
    std::vector<std::string> reached;
    const QWidget* start = QApplication::focusWidget();
    int stops = 0;
    do {
      keyToFocus(Qt::Key_Tab);
      QWidget* now = QApplication::focusWidget();
      EXPECT_GE(now->visibleRegion().boundingRect().height(), std::min(now->height() - 1, 60)) << "not scrolled to";
      EXPECT_FALSE(QAccessible::queryAccessibleInterface(now)->text(QAccessible::Name).isEmpty())
          << now->metaObject()->className();
      for (QWidget* up = now; up != nullptr; up = up->parentWidget()) {
        if (const auto* control = qobject_cast<SettingControl*>(up)) reached.emplace_back(control->setting().key);
      }
    } while (QApplication::focusWidget() != start && ++stops < 200);
    reached.erase(std::unique(reached.begin(), reached.end()), reached.end());
    EXPECT_EQ(reached, shownKeys());
    for (const QPalette& palette : {darkPalette(), light}) {
      QApplication::setPalette(palette);
      QTest::qWait(0);
      const double ground = luminance(window_->palette().color(QPalette::Window)) + 0.05;
      for (const QLabel* label : window_->findChildren<QLabel*>()) {
        if (!label->isVisible()) continue;
        const double ink = luminance(label->palette().color(label->foregroundRole())) + 0.05;
        EXPECT_GE(std::max(ink, ground) / std::min(ink, ground), 4.5) << label->text().toStdString();
      }
    }
  }
  keyToFocus(Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_THAT(shownKeys(), Contains("exposure")) << "from the last tab to the first";
  keyToFocus(Qt::Key_PageUp, Qt::ControlModifier);
  EXPECT_THAT(shownKeys(), Contains("enabled"));
}

}  // namespace
}  // namespace veloria::tests
