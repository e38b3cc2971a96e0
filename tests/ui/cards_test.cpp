// The cards: what a person chooses is what the record gets, and what the record and the system have is what is shown.

#include <QCheckBox>
#include <QClipboard>
#include <QColorDialog>
#include <QPushButton>
#include <QRadioButton>
#include <future>
#include <thread>

#include "../support/ManualTimers.h"
#include "../system/SystemFakes.h"
#include "UiFixture.h"
#include "settings/LookPreset.h"
#include "ui/cards/AgentCard.h"
#include "ui/cards/CommandLineCard.h"
#include "ui/cards/DriveModeChooser.h"
#include "ui/cards/EdgeCard.h"
#include "ui/cards/GlassCard.h"
#include "ui/cards/LoginItemCard.h"
#include "ui/cards/PaletteEditor.h"
#include "ui/cards/PaletteGallery.h"
#include "ui/cards/PanelCard.h"
#include "ui/cards/PresetGallery.h"
#include "ui/cards/ReadoutCard.h"
#include "ui/cards/SystemFactsCard.h"
#include "ui/controls/Swatch.h"

namespace veloria::tests {
namespace {

class CardsTest : public UiFixture {
 protected:
  /// The names of the tiles that are marked, with a comma after each.
  static QString marked(const QWidget& gallery) {
    QString names;
    for (const Tile* tile : gallery.findChildren<Tile*>()) {
      if (tile->isChecked()) names += tile->objectName() + QLatin1Char(',');
    }
    return names;
  }
  void change(void (*edit)(NimbraConfig&)) { editor_.change("a change", edit); }

  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
};

TEST_F(CardsTest, ALookIsChosenByAClickAndMarkedWhileTheRecordHasIt) {
  PresetGallery gallery(editor_, pictures_);
  for (const LookPreset& preset : LookPreset::all()) {
    const NimbraConfig before = config();
    child<Tile>(gallery, preset.name.data()).click();
    EXPECT_EQ(config(), choose(before, preset));
    EXPECT_EQ(marked(gallery), preset.name.data() + QString(","));
  }
  child<Tile>(gallery, "Rave").click();
  EXPECT_EQ(marked(gallery), "Rave,") << "a second click takes nothing back";
  change([](NimbraConfig& c) { c.exposure += 0.1; });
  EXPECT_EQ(marked(gallery), "") << "another look now";
  for (int i = 0; i < 2; ++i) editor_.undo();
  EXPECT_EQ(marked(gallery), "Flurry,") << "each choice is one step";
}

TEST_F(CardsTest, KeysMoveAmongTheTilesAndChoose) {
  PresetGallery gallery(editor_, pictures_);
  gallery.resize(400, 900);  // two in a row
  gallery.show();
  QApplication::setActiveWindow(&gallery);
  child<Tile>(gallery, "Northern Lights").setFocus();
  const std::pair<Qt::Key, const char*> keys[] = {{Qt::Key_Left, "Northern Lights"},    {Qt::Key_Up, "Northern Lights"},
                                                  {Qt::Key_Right, "Geomagnetic Storm"}, {Qt::Key_Down, "Deep Nebula"},
                                                  {Qt::Key_Up, "Geomagnetic Storm"},    {Qt::Key_Down, "Deep Nebula"},
                                                  {Qt::Key_Return, "Deep Nebula"}};
  for (const auto& [key, name] : keys) {
    EXPECT_EQ(config(), NimbraConfig()) << "moved, not chosen";
    QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), name);
  }
  EXPECT_EQ(config(), choose(NimbraConfig(), *LookPreset::find("Deep Nebula")));
}

TEST_F(CardsTest, ABuiltInPaletteReplacesOnesOwnWhichStaysAtHand) {
  PaletteGallery gallery(editor_);
  EXPECT_TRUE(child<Tile>(gallery, "ownPalette").isHidden()) << "there is none yet";
  change([](NimbraConfig& c) { c.customPalette = Palette{"Rose Quartz", {4, {1, 1, 1}}}; });
  const auto own = config().customPalette;
  for (const Palette& palette : Palette::presets()) {
    EXPECT_EQ(marked(gallery), "ownPalette,") << "whatever its name";
    child<Tile>(gallery, palette.name.c_str()).click();
    EXPECT_EQ(config().palette(), palette);
    EXPECT_EQ(marked(gallery), QString::fromStdString(palette.name + ","));
    editor_.undo();
    EXPECT_EQ(config().customPalette, own) << "one step back";
    editor_.redo();
    child<Tile>(gallery, "ownPalette").click();
    EXPECT_EQ(config().customPalette, own) << "and by its tile";
  }
  child<QCheckBox>(gallery, "matchWallpaper").click();
  EXPECT_TRUE(config().matchWallpaper);
}

TEST_F(CardsTest, AColorMakesAPaletteOfOnesOwn) {
  change([](NimbraConfig& c) { c.paletteName = "Nebula"; });
  PaletteEditor card(editor_);
  card.show();
  const auto nebula = Palette::presets()[3];
  EXPECT_EQ(child<QLineEdit>(card, "hex1").text(), hexOf(nebula.stops[0]));
  type(child<QLineEdit>(card, "hex2"), "#ff8000");
  ASSERT_TRUE(config().customPalette);
  EXPECT_EQ(hexOf(config().customPalette->stops[1]), "#ff8000");
  EXPECT_EQ(config().customPalette->stops[3], nebula.stops[3]) << "the others are exactly as they were";
  child<QPushButton>(card, "putAside").click();
  EXPECT_EQ(config().palette(), nebula);
  EXPECT_EQ(hexOf(editor_.ownPalette()->stops[1]), "#ff8000");
  child<QPushButton>(card, "copyPalette").click();
  EXPECT_EQ(config().customPalette->stops, nebula.stops);
}

TEST_F(CardsTest, WhatIsNoColorChangesNothingAndIsExplained) {
  auto card = std::make_unique<PaletteEditor>(editor_);
  card->show();
  QApplication::setActiveWindow(card.get());
  auto& field = child<QLineEdit>(*card, "hex3");
  for (const char* text : {"", "#12", "red", "#12345g"}) {
    type(field, text);
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_FALSE(config().customPalette) << text;
    EXPECT_TRUE(sentences(*card).contains("hexadecimal digits")) << text;
  }
  card.reset();
  EXPECT_FALSE(config().customPalette) << "closed while a field has the focus";
}

TEST_F(CardsTest, TheColorDialogIsFollowedWhileItIsOpen) {
  PaletteEditor card(editor_);
  card.show();
  for (const bool accept : {false, true}) {
    child<QPushButton>(card, "color4").click();
    auto* dialog = card.findChild<QColorDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->setCurrentColor(QColor(200, 0, 200));
    EXPECT_EQ(hexOf(config().palette().stops[3]), "#c800c8");
    accept ? dialog->accept() : dialog->reject();
    EXPECT_EQ(config().customPalette.has_value(), accept);
    runUntil([&] { return card.findChild<QColorDialog*>() == nullptr; }, 2000);
  }
}

TEST_F(CardsTest, GlassTuningsAndDriveModesAreOneClickEach) {
  GlassCard glass(editor_);
  for (const GlassTuning& tuning : GlassTuning::all()) {
    NimbraConfig wanted = config();
    tuning.apply(wanted);
    child<QPushButton>(glass, tuning.title.data()).click();
    EXPECT_EQ(config(), wanted);
  }
  DriveModeChooser chooser(editor_);
  chooser.show();
  for (const std::string_view raw : rawValues<Visualizer>) {
    child<QRadioButton>(chooser, raw.data()).click();
    EXPECT_EQ(rawValue(config().visualizer), raw);
    EXPECT_TRUE(sentences(chooser).contains(QString::fromUtf8(description(config().visualizer).data())));
  }
}

TEST_F(CardsTest, TheEdgeIsOneClickAndOneStepOfUndo) {
  EdgeCard card(editor_);
  const auto buttons = card.findChildren<QRadioButton*>();
  ASSERT_EQ(buttons.size(), 3);
  buttons[2]->click();
  EXPECT_EQ(editor_.extra().edge, EdgeChoice::bottom);
  editor_.undo();
  EXPECT_TRUE(buttons[0]->isChecked());
}

TEST_F(CardsTest, TheCommandsCardOffersWhatCanBeDone) {
  const std::tuple<CommandLineToolState, const char*, bool, bool, int> cases[] = {
      // the state, the sentence, whether it can be installed and removed, the commands to run by hand
      {{{}, "/home/me/bin", false, false, "sudo"}, "can be installed in /home/me/bin", true, false, 0},
      {{"/usr/nimbra", "/me", false, false, "sudo"}, "Another nimbra is installed: /usr", true, false, 0},
      {{"/me/nimbra", "/me", true, false, "sudo"}, "nimbra is ready to use: /me/nimbra", false, true, 0},
      {{"/usr/bin/nimbra", "/me", false, true, "sudo"}, "ready to use: /usr/bin/nimbra", false, false, 0},
      {{{}, {}, true, false, "sudo"}, "nimbra is ready to use.", false, true, 0},
      {{{}, {}, false, false, "sudo"}, "No directory on your PATH is writable.", false, false, 2}};
  for (const auto& [state, sentence, install, uninstall, byHand] : cases) {
    CommandLineCard card({[given = state] { return given; }, [] {}, [] {}}, "get it");
    card.show();
    EXPECT_TRUE(runUntil([&, wanted = sentence] { return sentences(card).contains(wanted); }))
        << sentences(card).toStdString();
    EXPECT_EQ(child<QPushButton>(card, "install").isVisible(), install) << sentence;
    EXPECT_EQ(child<QPushButton>(card, "uninstall").isVisible(), uninstall) << sentence;
    const auto commands = card.findChildren<VerbatimText*>();
    EXPECT_EQ(std::ranges::count_if(commands, &QWidget::isVisible), byHand) << sentence;
  }
}

TEST_F(CardsTest, TheCommandIsInstalledOnAnotherThreadAndErrorsAreShown) {
  const auto mainThread = std::this_thread::get_id();
  std::atomic<bool> installed = false, broken = true;
  const auto look = [&] {
    EXPECT_NE(std::this_thread::get_id(), mainThread);
    return CommandLineToolState{{}, "/d", installed, false, ""};
  };
  const auto act = [&] {
    EXPECT_NE(std::this_thread::get_id(), mainThread);
    if (broken) throw std::runtime_error("The link does not resolve.");
    installed = !installed;
  };
  CommandLineCard card({look, act, act}, "");
  card.show();
  auto& install = child<QPushButton>(card, "install");
  auto& uninstall = child<QPushButton>(card, "uninstall");
  ASSERT_TRUE(runUntil([&] { return install.isVisible() && install.isEnabled(); }));
  install.click();
  EXPECT_FALSE(install.isEnabled()) << "one thing at a time";
  EXPECT_TRUE(runUntil([&] { return sentences(card).contains("does not resolve"); }));
  broken = false;
  install.click();
  ASSERT_TRUE(runUntil([&] { return uninstall.isVisible(); }));
  EXPECT_FALSE(sentences(card).contains("does not resolve"));
  uninstall.click();
  EXPECT_TRUE(runUntil([&] { return install.isVisible(); }));
}

TEST_F(CardsTest, TheCommandsCardMayBeDestroyedWhileItLooks) {
  std::promise<void> gate;
  const auto look = [&gate] {
    gate.get_future().wait();
    return CommandLineToolState();
  };
  auto card = std::make_unique<CommandLineCard>(CommandLinePorts{look, {}, {}}, "");
  card->show();
  card.reset();
  gate.set_value();
  QThreadPool::globalInstance()->waitForDone();
  QTest::qWait(10);
}

/// Answers when it is told to.
class FakePanelClearing final : public PanelClearing {
 public:
  Offer offer() const override { return offered; }
  bool letsLightThrough() const override { return isClear; }
  bool canRestore() const override { return isClear; }
  void clear(Answer answer) override { asked.push_back({"clear", std::move(answer)}); }
  void restore(Answer answer) override { asked.push_back({"restore", std::move(answer)}); }
  void setChangeHandler(std::function<void()>) override { ADD_FAILURE() << "it belongs to the application"; }

  Offer offered;
  bool isClear = false;
  std::vector<std::pair<std::string, Answer>> asked;
};

TEST_F(CardsTest, ThePanelsCardOffersWhatTheDesktopCan) {
  using Way = PanelClearing::Way;
  FakePanelClearing panel;
  auto card = std::make_unique<PanelCard>(panel);
  card->show();
  const auto shown = [&] {
    QString names;
    for (const auto* button : card->findChildren<QPushButton*>()) {
      if (button->isVisible() && button->isEnabled()) names += button->text() + ',';
    }
    return names;
  };
  const auto becomes = [&](const char* buttons, const char* sentence) {
    return runUntil([&] { return shown() == buttons && sentences(*card).contains(sentence); });
  };
  const auto click = [&](const char* name) { child<QPushButton>(*card, name).click(); };
  EXPECT_TRUE(becomes("", "Looking for the panel"));
  panel.offered = {Way::none, "It can't be done.", ""};
  EXPECT_TRUE(becomes("", "It can't be done."));
  panel.offered = {Way::byHand, "Write this.", "alpha = 0\nbeta"};
  EXPECT_TRUE(becomes("Copy,", "Write this."));
  card->findChild<QPushButton*>()->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "alpha = 0\nbeta");

  panel.offered = {Way::afterAsking, "The panel restarts.", ""};
  EXPECT_TRUE(becomes("Make the panel clear,", "The panel restarts."));
  click("clearPanel");
  EXPECT_TRUE(becomes("Go on,Leave it as it is,", "The panel restarts."));
  click("declineToClear");
  EXPECT_TRUE(becomes("Make the panel clear,", "The panel restarts."));
  click("clearPanel");
  EXPECT_TRUE(panel.asked.empty());
  click("agreeToClear");
  EXPECT_TRUE(becomes("", "Asking the desktop"));
  ASSERT_EQ(panel.asked.size(), 1U);
  panel.asked[0].second("It refused.", "");
  EXPECT_TRUE(becomes("Make the panel clear,", "It refused."));

  panel.offered = {Way::oneClick, "", ""};
  click("clearPanel");
  panel.isClear = true;
  panel.asked[1].second("", "Log out once.");
  EXPECT_TRUE(becomes("Put the panel back,", "Log out once."));
  click("restorePanel");
  EXPECT_EQ(panel.asked[2].first, "restore");
  card.reset();
  panel.asked[2].second("", "");  // too late
}

TEST_F(CardsTest, TheExampleForAgentsIsCopied) {
  AgentCard card;
  card.findChild<QPushButton*>()->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), card.findChild<VerbatimText*>()->toPlainText());
}

TEST_F(CardsTest, TheLoginItemIsShownAsItReallyIs) {
  FakeLogin login;
  login.registered = true;
  LoginItem item(login);
  LoginItemCard card(item);
  card.show();
  auto* box = card.findChild<QCheckBox*>();
  EXPECT_TRUE(box->isChecked());
  box->click();
  EXPECT_FALSE(login.registered);
  login.works = false;
  box->click();
  EXPECT_FALSE(box->isChecked());
  EXPECT_TRUE(sentences(card).contains("/autostart: No space left on device"));
}

TEST_F(CardsTest, ReadoutsAreAskedForOnlyWhileTheWindowIsSeenAndCardsShowThem) {
  QWidget window;
  int asked = 0;
  Readouts told;
  auto* ticker = new ReadoutTicker(&window, [&] {
    ++asked;
    return told;
  });
  auto* pointer = ReadoutCard::makePointer(*ticker, &window);
  auto* weather = ReadoutCard::makeWeather(*ticker, &window);
  ReadoutCard::makeAudio(*ticker, &window);
  ReadoutCard::makeGlow(*ticker, &window);
  const auto expectSilence = [&] {
    QTest::qWait(20);
    const int before = asked;
    QTest::qWait(ReadoutTicker::intervalMs + 50);
    EXPECT_EQ(asked, before);
  };
  const auto tellAndWait = [&](const Readouts& now) {
    told = now;
    EXPECT_TRUE(runUntil([&, until = asked + 2] { return asked >= until; }, 5000));
  };
  expectSilence();
  window.show();
  Readouts all;
  all.pointer = all.weather = all.weatherError = all.audio = all.hdr = "what is told";
  tellAndWait(all);
  EXPECT_EQ(sentences(window).count("what is told"), 5);
  tellAndWait({});
  EXPECT_FALSE(pointer->isVisible()) << "there is nothing to tell";
  EXPECT_TRUE(sentences(*weather).contains("No weather data yet."));
  window.setWindowState(Qt::WindowMinimized);
  expectSilence();
  window.setWindowState(Qt::WindowNoState);
  tellAndWait({});
  window.hide();
  expectSilence();
}

TEST_F(CardsTest, SystemFactsAreFollowedAndLeadToTheirPanes) {
  FakeSystem system;
  ManualTimers timers;
  SystemState state(system, timers);
  SystemFactsCard card(state, {SystemPane::accessibilityDisplay, true});
  card.show();
  system.now = {true, false, 0.25};
  system.changed();
  EXPECT_TRUE(sentences(card).contains("Transparency is reduced."));
  EXPECT_TRUE(sentences(card).contains("Glass is tinted (0.25)"));
  child<QPushButton>(card, "openTransparency").click();
  EXPECT_THAT(system.opened, testing::ElementsAre(SystemPane::accessibilityDisplay));
  EXPECT_TRUE(sentences(card).contains("No settings program."));
}

}  // namespace
}  // namespace veloria::tests
