// The settings window with the program's own cards in it, used by keyboard and mouse.

#include "ui/window/SettingsWindow.h"

#include <QAccessible>
#include <QButtonGroup>
#include <QPushButton>
#include <QScrollArea>
#include <QWheelEvent>
#include <cmath>

#include "../support/ManualTimers.h"
#include "../system/SystemFakes.h"
#include "UiFixture.h"
#include "ui/cards/AgentCard.h"
#include "ui/cards/CommandLineCard.h"
#include "ui/cards/DriveModeChooser.h"
#include "ui/cards/GlassCard.h"
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

  /// Somebody else changes a setting.
  void change(std::string_view key, double value) {
    NimbraConfig others = config();
    setValue(others, *SettingCatalogue::find(key), value);
    store_.setConfig(others);
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
      const double value = valueIn(config(), setting), initial = valueIn(NimbraConfig(), setting);
      EXPECT_NE(value, initial);
      NimbraConfig expected;
      setValue(expected, setting, value);
      EXPECT_EQ(config(), expected) << "out of range, or another field";
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
    moveByKeyboard(moved, config());
    QTest::mouseDClick(&slider(moved), Qt::LeftButton);
    EXPECT_EQ(config(), NimbraConfig());
    ValueField& typed = field(moved);
    enter(typed, typed.locale().toString(setting.range.maximum, 'f', setting.range.decimals));
    EXPECT_EQ(config(), NimbraConfig()) << "changed before Enter";
    key(typed, Qt::Key_Return);
    EXPECT_EQ(valueIn(config(), setting), setting.range.maximum);
    expectMoved();
    store_.setConfig({});
  }
}

TEST_F(SettingsWindowTest, EachControlShowsAtOnceWhatOthersChangeAndIgnoresTheWheel) {
  open();
  for (const Setting& setting : SettingCatalogue::all()) {
    SCOPED_TRACE(setting.key);
    SettingControl& seen = control(setting);
    const SettingKind kind = kindOf(setting);
    const double other = valueIn(config(), setting) == 0 ? 1 : 0;
    change(setting.key, kind == SettingKind::number ? setting.range.maximum : other);
    const NimbraConfig changed = config();
    if (kind == SettingKind::number) {
      EXPECT_EQ(slider(seen).value(), slider(seen).maximum());
      EXPECT_EQ(field(seen).value(), setting.range.maximum);
    } else if (kind == SettingKind::toggle) {
      EXPECT_EQ(static_cast<QAbstractButton*>(seen.focusProxy())->isChecked(), other != 0);
    } else {
      EXPECT_EQ(seen.findChild<QButtonGroup*>()->checkedId(), static_cast<int>(other));
    }
    for (QWidget* part : seen.findChildren<QWidget*>()) {
      if (part->hasFocus()) part->clearFocus();
      const QPointF at = part->rect().center();
      QWheelEvent turned(at, part->mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, {}, Qt::NoScrollPhase, false);
      QApplication::sendEvent(part, &turned);
    }
    EXPECT_EQ(config(), changed) << "written back";
  }
}

TEST_F(SettingsWindowTest, ADragIsOneStepOfUndoAndIsNotFoughtWith) {
  open();
  SettingSlider& dragged = slider(control("exposure"));
  change("exposure", 0);
  const QPoint handle(4, dragged.height() / 2);  // at the left end
  const auto dragTo = [&](int x) {
    now_ += 0.1;
    QTest::mouseMove(&dragged, handle + QPoint(x, 0));
    return config().exposure;
  };
  QTest::mousePress(&dragged, Qt::LeftButton, {}, handle);
  const double little = dragTo(20);
  EXPECT_GT(little, 0);
  EXPECT_GT(dragTo(60), little);
  const int place = dragged.value();
  change("exposure", 6);
  EXPECT_EQ(dragged.value(), place);
  QTest::mouseRelease(&dragged, Qt::LeftButton, {}, handle + QPoint(60, 0));
  EXPECT_EQ(dragged.value(), dragged.maximum()) << "the handle shows the record once it is let go";
  EXPECT_EQ(config().exposure, 6);
  keyToFocus(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(config().exposure, 0);
}

TEST_F(SettingsWindowTest, UndoAndRedoTakeTypingBackFirstAndThenTheSetting) {
  open();
  const auto buttons = window_->findChildren<GlyphButton*>(QString(), Qt::FindDirectChildrenOnly);
  moveByKeyboard(control("hdrGlow"), config());
  buttons.at(0)->click();
  EXPECT_TRUE(config().hdrGlow && !buttons.at(0)->isEnabled());
  buttons.at(1)->click();
  EXPECT_FALSE(config().hdrGlow || buttons.at(1)->isEnabled());

  ValueField& exposure = field(control("exposure"));
  enter(exposure, "3");
  change("exposure", 5);
  EXPECT_EQ(exposure.text(), "3") << "what is being typed is left alone";
  key(exposure, Qt::Key_Escape);
  EXPECT_NE(exposure.text(), "3");
  for (QWidget* focus : {static_cast<QWidget*>(&exposure), static_cast<QWidget*>(&search())}) {
    focus->setFocus();
    key(*focus, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(config().hdrGlow);
    key(*focus, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_FALSE(config().hdrGlow);
  }
}

TEST_F(SettingsWindowTest, ValuesOutOfRangeAreLeftAloneUntilTheyAreChanged) {
  NimbraConfig absurd;
  absurd.exposure = 50;
  absurd.opacity = -3;
  absurd.glowAmount = 1e300;
  absurd.contrast = INFINITY;
  absurd.saturation = 1.23456789012345;
  open(absurd);
  for (const char* name : {"exposure", "opacity", "saturation"}) {
    field(control(name)).setFocus();
    keyToFocus(Qt::Key_Return);  // nothing was typed
    keyToFocus(Qt::Key_Tab);
  }
  EXPECT_EQ(config(), absurd);
  EXPECT_EQ(field(control("exposure")).text(), "50.00");
  key(field(control("exposure")), Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_DOUBLE_EQ(config().exposure, 5.99);
  key(slider(control("glowAmount")), Qt::Key_End);
  EXPECT_EQ(config().glowAmount, 4);
}

TEST_F(SettingsWindowTest, SearchShowsTheControlsThemselvesOrSaysThatThereAreNone) {
  open();
  window_->showTab(SettingTab::system);
  key(*window_, Qt::Key_F, Qt::ControlModifier);
  ASSERT_TRUE(search().hasFocus());
  QTest::keyClicks(&search(), "hueSpread");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), ElementsAre("hueSpread", "hueSpreadScale", "hueSpreadDrift"));
  window_->search("xyzzy");
  QTest::qWait(0);
  EXPECT_THAT(shownKeys(), testing::IsEmpty());
  EXPECT_TRUE(sentences(*window_).contains("Nothing found."));
  keyToFocus(Qt::Key_Escape);
  EXPECT_TRUE(search().text().isEmpty());
  EXPECT_THAT(shownKeys(), Contains("framesPerSecond")) << "back on the tab";
  keyToFocus(Qt::Key_Escape);
  EXPECT_FALSE(window_->isVisible());
}

TEST_F(SettingsWindowTest, ACardStandsInItsPlaceIsMadeLateAndIsFound) {
  window_ = std::make_unique<SettingsWindow>(editor_);
  QLabel* made = nullptr;
  window_->addCard({SettingTab::motion, "Flow", "A card", "zebra", [&] { return made = new QLabel("a card"); }});
  open();
  EXPECT_EQ(made, nullptr);
  window_->search("zebra");
  QTest::qWait(0);
  key(search(), Qt::Key_Down);
  EXPECT_TRUE(QApplication::focusWidget()->accessibleName().contains("A card")) << "the first result";
  for (auto* button : window_->findChildren<QPushButton*>()) {
    if (button->isVisible() && button->accessibleName().contains("A card")) button->click();
  }
  QTest::qWait(10);
  ASSERT_NE(made, nullptr);
  EXPECT_FALSE(made->visibleRegion().isEmpty()) << "not scrolled to";
  const auto top = [&](const QWidget& widget) { return widget.mapTo(made->parentWidget(), QPoint()).y(); };
  EXPECT_GT(made->y(), top(control("buoyancy")));
  EXPECT_LT(made->y(), top(control("curlStrength")));
}

TEST_F(SettingsWindowTest, APopupClosesWhenItIsLeftButNotForItsOwnDialogs) {
  window_ = std::make_unique<SettingsWindow>(editor_, SettingsWindow::Kind::popup);
  open();
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
    readouts_ = {path, path, path, path, path, path, path, path, path, path, path, path};
    commands_.look = [path] { return CommandLineToolState{{}, {}, false, false, "ln -sf " + path}; };
    system_.now = {true, true, 1};
    state_.refresh();
    window_ = std::make_unique<SettingsWindow>(editor_);
    auto* ticker = new ReadoutTicker(window_.get(), [this] { return readouts_; });
    const std::pair<SettingTab, std::function<QWidget*()>> cards[] = {
        {SettingTab::look, [this] { return new PresetGallery(editor_, pictures_); }},
        {SettingTab::look, [this] { return new PaletteGallery(editor_); }},
        {SettingTab::look, [this] { return new PaletteEditor(editor_); }},
        {SettingTab::look, [this] { return new GlassCard(editor_); }},
        {SettingTab::bar, [ticker] { return ReadoutCard::makeNotch(*ticker); }},
        {SettingTab::drive, [this] { return new DriveModeChooser(editor_); }},
        {SettingTab::drive, [ticker] { return ReadoutCard::makeAudio(*ticker); }},
        {SettingTab::drive, [] { return new AgentCard; }},
        {SettingTab::drive, [this] { return new ScriptCard(editor_, draft_); }},
        {SettingTab::system, [ticker] { return ReadoutCard::makeStatus(*ticker); }},
        {SettingTab::system, [this] { return new CommandLineCard(commands_, "get it"); }},
        {SettingTab::system, [this] { return new SystemFactsCard(state_, panes_); }}};
    for (const auto& [tab, make] : cards) window_->addCard({tab, nullptr, "A card", {}, make});
  }
  ~WholeWindowTest() override { window_.reset(); }

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

  /// What is cut off or beyond the edge.
  QStringList clipped() const {
    QStringList found;
    for (const QWidget* widget : window_->findChildren<QWidget*>()) {
      const QWidget* parent = widget->parentWidget();
      if (!widget->isVisible() || parent->inherits("QAbstractScrollArea") || parent->inherits("QLineEdit")) continue;
      const QString who = widget->metaObject()->className() + widget->accessibleName() + widget->objectName();
      if (widget->mapTo(window_.get(), QPoint(widget->width(), 0)).x() > window_->width()) found += who;
      const auto* label = qobject_cast<const QLabel*>(widget);
      const auto* button = qobject_cast<const QAbstractButton*>(widget);
      if (label == nullptr && button == nullptr) continue;
      const int needed = widget->hasHeightForWidth() ? widget->heightForWidth(widget->width())
                                                     : (label ? label->sizeHint() : button->minimumSizeHint()).height();
      if (widget->width() < widget->minimumSizeHint().width() || widget->height() < needed) found += who;
    }
    for (const QScrollArea* page : window_->findChildren<QScrollArea*>()) {
      if (page->isVisible() && page->widget()->width() > page->viewport()->width()) found += "scrolls sideways";
    }
    return found;
  }
  void expectNothingClipped() {
    EXPECT_TRUE(runUntil([this] { return clipped().isEmpty(); }, 5000)) << clipped().join(' ').toStdString();
  }

  Readouts readouts_;
  CommandLinePorts commands_;
  SystemPanes panes_{SystemPane::appearance, true};
  ScriptDraft draft_;
  FakeSystem system_;
  ManualTimers timers_;
  SystemState state_{system_, timers_};
  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
};

TEST_F(WholeWindowTest, NothingIsClippedAndNothingScrollsSideways) {
  const QFont font = QApplication::font();
  const std::pair<double, int> cases[] = {{1, 360}, {2, 400}};
  for (const auto& [scale, width] : cases) {
    QFont scaled = font;
    scaled.setPointSizeF(font.pointSizeF() * scale);
    QApplication::setFont(scaled);
    openWhole();
    window_->resize(width, 520);
    for (int tab = 0; tab < settingTabCount; ++tab) {
      SCOPED_TRACE(testing::Message() << scale << " " << tab);
      showTab(tab);
      EXPECT_EQ(window_->width(), width);
      expectNothingClipped();
    }
    window_->search(QStringLiteral("e"));
    QTest::qWait(20);
    expectNothingClipped();
  }
  QApplication::setFont(font);
}

TEST_F(WholeWindowTest, TheTabKeyGoesThroughEverythingScrollsToItAndAllHasAName) {
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
  }
  keyToFocus(Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_THAT(shownKeys(), Contains("exposure")) << "from the last tab to the first";
}

}  // namespace
}  // namespace veloria::tests
