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
#include "ui/cards/GlassCard.h"
#include "ui/cards/LoginItemCard.h"
#include "ui/cards/PaletteEditor.h"
#include "ui/cards/PaletteGallery.h"
#include "ui/cards/PresetGallery.h"
#include "ui/cards/ReadoutCard.h"
#include "ui/cards/SystemFactsCard.h"
#include "ui/controls/Swatch.h"

namespace veloria::tests {
namespace {

using testing::IsEmpty;

class CardsTest : public UiFixture {
 protected:
  /// The names of the tiles that are marked.
  static QStringList marked(const QWidget& gallery) {
    QStringList names;
    for (const Tile* tile : gallery.findChildren<Tile*>()) {
      if (tile->isChecked()) names += tile->objectName();
    }
    return names;
  }
  void change(void (*edit)(NimbraConfig&)) { editor_.change("a change", edit); }

  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
};

TEST_F(CardsTest, ALookIsChosenByAClickAndMarkedWhileTheRecordHasIt) {
  PresetGallery gallery(editor_, pictures_);
  change([](NimbraConfig& c) { c.tempo = 1.7; });
  EXPECT_THAT(marked(gallery), IsEmpty());
  for (const LookPreset& preset : LookPreset::all()) {
    const NimbraConfig before = config();
    child<Tile>(gallery, preset.name.data()).click();
    EXPECT_EQ(config(), choose(before, preset));
    EXPECT_EQ(marked(gallery), QStringList(preset.name.data()));
  }
  child<Tile>(gallery, "Rave").click();
  EXPECT_EQ(marked(gallery), QStringList("Rave")) << "a second click takes nothing back";
  change([](NimbraConfig& c) { c.exposure += 0.1; });
  EXPECT_THAT(marked(gallery), IsEmpty()) << "another look now";
  editor_.undo();
  editor_.undo();
  EXPECT_EQ(marked(gallery), QStringList("Flurry")) << "each choice is one step";
}

TEST_F(CardsTest, KeysMoveAmongTheTilesAndChoose) {
  PresetGallery gallery(editor_, pictures_);
  gallery.resize(400, 900);  // two in a row
  gallery.show();
  QApplication::setActiveWindow(&gallery);
  child<Tile>(gallery, "Northern Lights").setFocus();
  const std::tuple<Qt::Key, const char*, int> keys[] = {
      // where it leads, and the look that is in use then
      {Qt::Key_Left, "Northern Lights", -1},    {Qt::Key_Up, "Northern Lights", -1},
      {Qt::Key_Right, "Geomagnetic Storm", -1}, {Qt::Key_Down, "Deep Nebula", -1},
      {Qt::Key_Return, "Deep Nebula", 3},       {Qt::Key_Up, "Geomagnetic Storm", 3},
      {Qt::Key_Space, "Geomagnetic Storm", 1}};
  for (const auto& [key, name, look] : keys) {
    QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), name);
    NimbraConfig wanted;
    if (look >= 0) wanted = choose(wanted, LookPreset::all().at(static_cast<std::size_t>(look)));
    EXPECT_EQ(config(), wanted) << name;
  }
  const auto tiles = gallery.findChildren<Tile*>();
  EXPECT_EQ(std::ranges::count_if(tiles, [](auto* t) { return t->focusPolicy() & Qt::TabFocus; }), 1) << "tab stops";
}

TEST_F(CardsTest, ABuiltInPaletteReplacesOnesOwnWhichStaysAtHand) {
  PaletteGallery gallery(editor_);
  EXPECT_EQ(marked(gallery), QStringList("Classic Nimbra"));
  EXPECT_TRUE(child<Tile>(gallery, "ownPalette").isHidden()) << "there is none yet";
  for (const Palette& palette : Palette::presets()) {
    change([](NimbraConfig& c) { c.customPalette = Palette{"Rose Quartz", {4, {1, 1, 1}}}; });
    const auto own = config().customPalette;
    EXPECT_EQ(marked(gallery), QStringList("ownPalette")) << "whatever its name";
    child<Tile>(gallery, palette.name.c_str()).click();
    EXPECT_EQ(config().palette(), palette);
    EXPECT_EQ(marked(gallery), QStringList(QString::fromStdString(palette.name)));
    editor_.undo();
    EXPECT_EQ(config().customPalette, own) << "one step back";
    editor_.redo();
    child<Tile>(gallery, "ownPalette").click();
    EXPECT_EQ(config().customPalette, own) << "and by its tile";
    child<Tile>(gallery, palette.name.c_str()).click();
  }
  change([](NimbraConfig& c) { c.paletteName = "no such palette"; });
  EXPECT_EQ(marked(gallery), QStringList("Classic Nimbra")) << "what is drawn then";

  auto& box = child<QCheckBox>(gallery, "matchWallpaper");
  box.click();
  EXPECT_TRUE(config().matchWallpaper);
  editor_.undo();
  EXPECT_FALSE(box.isChecked());
  Readouts readouts;
  readouts.picture = "It can't be read.";
  gallery.follow(*new ReadoutTicker(&gallery, [&] { return readouts; }));
  gallery.show();
  EXPECT_TRUE(runUntil([&] { return sentences(gallery).contains("It can't be read."); }));
}

TEST_F(CardsTest, AColorMakesAPaletteOfOnesOwn) {
  change([](NimbraConfig& c) { c.paletteName = "Nebula"; });
  PaletteEditor card(editor_);
  card.show();
  const auto nebula = Palette::presets()[3];
  EXPECT_EQ(child<QLineEdit>(card, "hex1").text(), hexOf(nebula.stops[0]));
  EXPECT_FALSE(child<QPushButton>(card, "putAside").isEnabled());
  type(child<QLineEdit>(card, "hex2"), "#ff8000");
  ASSERT_TRUE(config().customPalette);
  EXPECT_EQ(config().customPalette->name, "Custom");
  EXPECT_EQ(hexOf(config().customPalette->stops[1]), "#ff8000");
  EXPECT_EQ(config().customPalette->stops[3], nebula.stops[3]) << "the others are exactly as they were";
  child<QPushButton>(card, "putAside").click();
  EXPECT_EQ(config().palette(), nebula);
  EXPECT_EQ(hexOf(editor_.ownPalette()->stops[1]), "#ff8000");
  child<QPushButton>(card, "copyPalette").click();
  EXPECT_EQ(config().customPalette->stops, nebula.stops);
  change([](NimbraConfig& c) { c.customPalette = Palette{"short", {{1, 0, 0}}}; });
  type(child<QLineEdit>(card, "hex4"), "#010203");
  EXPECT_EQ(config().customPalette->stops.size(), 4U) << "a palette of too few colours is filled up";
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
  type(field, "#1234567");  // the field takes seven characters
  EXPECT_EQ(hexOf(config().palette().stops[2]), "#123456");
  EXPECT_FALSE(sentences(*card).contains("hexadecimal digits"));
  type(field, "#12");
  card.reset();
  EXPECT_EQ(hexOf(config().palette().stops[2]), "#123456") << "closed while a field has the focus";
}

TEST_F(CardsTest, TheColorDialogIsFollowedWhileItIsOpen) {
  PaletteEditor card(editor_);
  card.show();
  std::optional<Palette> before;
  for (const bool accept : {false, true, false}) {
    SCOPED_TRACE(accept);
    child<QPushButton>(card, "color4").click();
    auto* dialog = card.findChild<QColorDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->setCurrentColor(QColor(200, 0, 200));
    EXPECT_EQ(hexOf(config().palette().stops[3]), "#c800c8");
    dialog->setCurrentColor(QColor(1, 2, 3));
    accept ? dialog->accept() : dialog->reject();
    if (accept) before = config().customPalette;
    EXPECT_EQ(config().customPalette, before);
    EXPECT_EQ(hexOf(config().palette().stops[3]) == "#010203", before.has_value());
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
  editor_.undo();
  editor_.undo();
  EXPECT_EQ(config(), NimbraConfig()) << "and one step each";
  DriveModeChooser chooser(editor_);
  chooser.show();
  for (std::size_t i = 0; i < rawValues<Visualizer>.size(); ++i) {
    const auto mode = static_cast<Visualizer>(i);
    child<QRadioButton>(chooser, rawValue(mode).data()).click();
    EXPECT_EQ(config().visualizer, mode);
    EXPECT_TRUE(sentences(chooser).contains(QString::fromUtf8(description(mode).data())));
  }
  change([](NimbraConfig& c) { c.visualizer = Visualizer::weather; });
  EXPECT_TRUE(child<QRadioButton>(chooser, "weather").isChecked());
}

TEST_F(CardsTest, TheCommandsCardSaysWhatIsThereAndOffersWhatCanBeDone) {
  const CommandLineToolState byHand{{}, {}, false, false, "sudo ln -sf '/opt/v/nimbra' /usr/local/bin/nimbra"};
  struct Case {
    CommandLineToolState view;
    QStringList sentence;
    bool install, uninstall;
  };
  const Case cases[] = {
      {{{}, "/home/me/bin", false, false, "sudo"}, {"/home/me/bin"}, true, false},
      {{"/usr/bin/nimbra", "/home/me/bin", false, false, "sudo"}, {"/usr/bin/nimbra", "/home/me/bin"}, true, false},
      {{"/me/nimbra", "/me", true, false, "sudo"}, {"nimbra is ready to use: /me/nimbra"}, false, true},
      {{"/usr/bin/nimbra", {}, true, false, "sudo"}, {"nimbra is ready to use: /usr/bin/nimbra"}, false, true},
      {{"/usr/bin/nimbra", "/me", false, true, "sudo"}, {"nimbra is ready to use: /usr/bin/nimbra"}, false, false},
      {{{}, {}, true, false, "sudo"}, {"nimbra is ready to use."}, false, true},
      {byHand, {"No directory on your PATH is writable. Use the command below instead."}, false, false},
  };
  for (const Case& c : cases) {
    for (const std::string package : {"", "get it"}) {
      SCOPED_TRACE(c.sentence.back().toStdString() + package);
      CommandLineCard card({[&] { return c.view; }, [] {}, [] {}}, package);
      card.show();
      ASSERT_TRUE(runUntil([&] {
        return std::ranges::all_of(c.sentence, [&](auto& part) { return sentences(card).contains(part); });
      })) << sentences(card).toStdString();
      EXPECT_EQ(child<QPushButton>(card, "install").isVisible(), c.install);
      EXPECT_EQ(child<QPushButton>(card, "uninstall").isVisible(), c.uninstall);
      QStringList commands, wanted;
      for (const auto* text : card.findChildren<VerbatimText*>()) {
        if (text->isVisible()) commands += text->toPlainText();
      }
      if (c.view == byHand) wanted += QString::fromStdString(byHand.manualCommand);
      if (c.view == byHand && !package.empty()) wanted += QString::fromStdString(package);
      EXPECT_EQ(commands, wanted);
    }
  }
}

TEST_F(CardsTest, TheCommandIsInstalledAndRemovedOnAnotherThreadAndErrorsAreShown) {
  const auto mainThread = std::this_thread::get_id();
  std::atomic<bool> installed = false, broken = true;
  std::atomic<int> looks = 0;
  const auto act = [&](bool install) {
    EXPECT_NE(std::this_thread::get_id(), mainThread);
    if (broken) throw std::runtime_error("The link does not resolve.");
    installed = install;
  };
  CommandLinePorts ports{[&] {
                           EXPECT_NE(std::this_thread::get_id(), mainThread);
                           if (++looks == 1) throw std::runtime_error("the shell is broken");
                           CommandLineToolState view;
                           view.installDirectory = "/d";
                           view.installedHere = installed;
                           return view;
                         },
                         [&] { act(true); }, [&] { act(false); }};
  CommandLineCard card(ports, "");
  EXPECT_EQ(looks, 0) << "not before it is seen";
  card.show();
  EXPECT_TRUE(runUntil([&] { return sentences(card).contains("the shell is broken"); }));
  card.hide();
  card.show();
  auto& install = child<QPushButton>(card, "install");
  auto& uninstall = child<QPushButton>(card, "uninstall");
  ASSERT_TRUE(runUntil([&] { return install.isVisible() && install.isEnabled(); }));
  install.click();
  EXPECT_FALSE(install.isEnabled()) << "one thing at a time";
  EXPECT_TRUE(runUntil([&] { return sentences(card).contains("does not resolve"); }));
  EXPECT_TRUE(install.isEnabled()) << "to be tried again";
  broken = false;
  install.click();
  ASSERT_TRUE(runUntil([&] { return uninstall.isVisible(); }));
  EXPECT_TRUE(installed);
  EXPECT_FALSE(sentences(card).contains("does not resolve"));
  uninstall.click();
  ASSERT_TRUE(runUntil([&] { return install.isVisible(); }));
  EXPECT_FALSE(installed);
  EXPECT_EQ(looks, 5);
}

TEST_F(CardsTest, TheCommandsCardMayBeDestroyedWhileItLooks) {
  std::promise<void> gate;
  auto card = std::make_unique<CommandLineCard>(CommandLinePorts{[opened = gate.get_future().share()] {
                                                                   opened.wait();
                                                                   return CommandLineToolState();
                                                                 },
                                                                 {},
                                                                 {}},
                                                "");
  card->show();
  EXPECT_TRUE(sentences(*card).contains("Looking")) << "the window goes on meanwhile";
  card.reset();
  gate.set_value();
  QThreadPool::globalInstance()->waitForDone();
  runFor(10);
}

TEST_F(CardsTest, TheExampleForAgentsIsCopied) {
  AgentCard card;
  card.show();
  const char* example =
      "nimbra busy\npytest && nimbra ok || nimbra fail\nnimbra palette \"#ff0055\" \"#ffcc00\" \"#00ddff\"";
  EXPECT_EQ(card.findChild<VerbatimText*>()->toPlainText(), example);
  QGuiApplication::clipboard()->clear();
  card.findChild<QPushButton*>()->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), example);
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
  login.works = true;
  box->click();
  EXPECT_FALSE(sentences(card).contains("No space"));
}

class ReadoutTest : public UiFixture {
 protected:
  Readouts readouts_;
  int asked_ = 0;
  QWidget window_;
  ReadoutTicker* ticker_ = new ReadoutTicker(&window_, [this] {
    ++asked_;
    return readouts_;
  });
};

TEST_F(ReadoutTest, TheProgramIsAskedOnlyWhileTheWindowIsSeen) {
  const auto expectSilence = [this] {
    const int before = asked_;
    runFor(ReadoutTicker::intervalMs + 50);
    EXPECT_EQ(asked_, before);
  };
  expectSilence();
  window_.show();
  EXPECT_EQ(asked_, 1) << "at once";
  EXPECT_TRUE(runUntil([&] { return asked_ >= 3; }, 5000));
  window_.setWindowState(Qt::WindowMinimized);
  runFor(20);
  expectSilence();
  window_.setWindowState(Qt::WindowNoState);
  EXPECT_TRUE(runUntil([&, from = asked_] { return asked_ > from; }, 5000));
  window_.hide();
  expectSilence();
}

TEST_F(ReadoutTest, CardsShowWhatIsToldAndNothingElse) {
  struct Case {
    ReadoutCard* (*make)(ReadoutTicker&, QWidget*);
    std::vector<std::string Readouts::*> lines;
    bool silent;  ///< hides while there is nothing to tell
  };
  const Case cases[] = {
      {&ReadoutCard::makeStatus, {&Readouts::darkness, &Readouts::hint, &Readouts::figures, &Readouts::capture}, false},
      {&ReadoutCard::makeNotch, {&Readouts::cutout}, true},
      {&ReadoutCard::makeWeather, {&Readouts::weather, &Readouts::weatherError}, false},
      {&ReadoutCard::makeAudio, {&Readouts::audio}, false},
      {&ReadoutCard::makePointer, {&Readouts::pointer}, true}};
  window_.show();
  std::vector<ReadoutCard*> cards;
  for (const Case& c : cases) cards.push_back(c.make(*ticker_, &window_));
  for (ReadoutCard* card : cards) card->show();
  const auto tell = [this](const Readouts& now) {
    readouts_ = now;
    runUntil([this, from = asked_] { return asked_ > from; });
  };
  Readouts all;
  for (const Case& c : cases) {
    for (const auto line : c.lines) all.*line = "what is told";
  }
  tell({});
  tell(all);
  for (std::size_t i = 0; i < cards.size(); ++i) {
    EXPECT_EQ(sentences(*cards[i]).count("what is told"), static_cast<qsizetype>(cases[i].lines.size())) << i;
  }
  EXPECT_TRUE(sentences(*cards[3]).contains("never a microphone. Nothing is recorded or sent anywhere."));
  tell({});
  for (std::size_t i = 0; i < cards.size(); ++i) {
    EXPECT_FALSE(sentences(*cards[i]).contains("what is told")) << i;
    EXPECT_EQ(cards[i]->isVisible(), !cases[i].silent) << i;
    cards[i]->hide();
  }
  tell({});
  for (const ReadoutCard* card : cards) EXPECT_FALSE(card->isVisible()) << "who hides it is not overruled";
}

TEST_F(UiFixture, SystemFactsAreFollowedAndLeadToTheirPanes) {
  FakeSystem system;
  ManualTimers timers;
  SystemState state(system, timers);
  QWidget window;
  auto* card = new SystemFactsCard(state, {}, &window);
  auto* tinted = new SystemFactsCard(state, {SystemPane::accessibilityDisplay, true}, &window);
  window.show();
  const QString before = sentences(*card);
  EXPECT_FALSE(before.contains("Glass"));
  system.now = {true, false, 0.25};
  system.changed();
  const QString reduced = sentences(*card);
  system.now.increaseContrast = true;
  system.changed();
  EXPECT_NE(reduced, before);
  EXPECT_NE(sentences(*card), reduced);
  EXPECT_TRUE(sentences(*card).contains("Transparency is reduced."));
  EXPECT_TRUE(sentences(*tinted).contains("Glass is tinted (0.25)"));
  const std::tuple<SystemFactsCard*, const char*, SystemPane> panes[] = {
      {card, "openTransparency", SystemPane::appearance},
      {tinted, "openTransparency", SystemPane::accessibilityDisplay},
      {tinted, "openContrast", SystemPane::accessibilityDisplay},
      {tinted, "openTint", SystemPane::appearance},
      {tinted, "openMenuBar", SystemPane::menuBar},
      {tinted, "openWallpaper", SystemPane::wallpaper}};
  for (const auto& [place, button, pane] : panes) {
    for (const bool opens : {false, true}) {
      system.opens = opens;
      child<QPushButton>(*place, button).click();
      EXPECT_EQ(system.opened.back(), pane) << button;
      EXPECT_EQ(sentences(*place).contains("No settings program."), !opens);
    }
  }
}

}  // namespace
}  // namespace veloria::tests
