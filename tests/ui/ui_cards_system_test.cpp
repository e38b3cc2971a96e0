// The cards of facts and of the system.

#include <QCheckBox>
#include <QClipboard>
#include <QPushButton>
#include <QTest>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "../system/SystemFakes.h"
#include "ui/cards/AgentCard.h"
#include "ui/cards/CommandLineCard.h"
#include "ui/cards/LoginItemCard.h"
#include "ui/cards/ReadoutCard.h"
#include "ui/cards/SystemFactsCard.h"
#include "ui_cards_fixture.h"

namespace veloria::tests {
namespace {

using CommandLineTest = CardsFixture;

bool isSettled(const QWidget& card) {
  const auto* label = card.findChild<QLabel*>("commandState");
  return !label->text().isEmpty() && !label->text().startsWith("Looking");
}

TEST_F(CommandLineTest, saysHowItIsAndOffersWhatCanBeDone) {
  struct Case {
    CommandLineToolState view;
    const char* sentence;
    bool install, uninstall, byHand;
  };
  const std::vector<Case> cases{
      {{{}, "/home/me/bin", false, false, "sudo ln"},
       "nimbra can be put on your PATH, into /home/me/bin.",
       true,
       false,
       false},
      {{"/usr/bin/nimbra", "/home/me/bin", false, false, "sudo ln"},
       "The nimbra on your PATH is not this program's: /usr/bin/nimbra. This one can be put into /home/me/bin.",
       true,
       false,
       false},
      {{"/home/me/bin/nimbra", "/home/me/bin", true, false, "sudo ln"},
       "nimbra is ready to use: /home/me/bin/nimbra",
       false,
       true,
       false},
      {{"/usr/bin/nimbra", {}, true, false, "sudo ln"}, "nimbra is ready to use: /usr/bin/nimbra", false, true, false},
      {{"/usr/bin/nimbra", "/home/me/bin", false, true, "sudo ln"},
       "nimbra is ready to use: /usr/bin/nimbra",
       false,
       false,
       false},
      {{{}, {}, true, false, "sudo ln"}, "nimbra is ready to use.", false, true, false},
      {{{}, {}, false, false, "sudo ln -sf '/opt/v/nimbra' /usr/local/bin/nimbra"},
       "No directory on your PATH is writable. Use the command below instead.",
       false,
       false,
       true},
  };
  for (const Case& c : cases) {
    for (const std::string package : {"", "get it"}) {
      SCOPED_TRACE(c.sentence + package);
      CommandLineCard card({[&] { return c.view; }, [] {}, [] {}}, package);
      card.show();
      ASSERT_TRUE(runUntil([&] { return isSettled(card); }));
      EXPECT_TRUE(sentences(card).contains(c.sentence)) << sentences(card).toStdString();
      EXPECT_EQ(child<QPushButton>(card, "install").isVisible(), c.install);
      EXPECT_EQ(child<QPushButton>(card, "uninstall").isVisible(), c.uninstall);
      QStringList commands;
      for (const auto* text : card.findChildren<VerbatimText*>()) {
        if (text->isVisible()) commands += text->toPlainText();
      }
      QStringList wanted;
      if (c.byHand) wanted += QString::fromStdString(c.view.manualCommand);
      if (c.byHand && !package.empty()) wanted += QString::fromStdString(package);
      EXPECT_EQ(commands, wanted);
    }
  }
}

TEST_F(CommandLineTest, installsAndRemovesOnAnotherThreadAndLooksAgain) {
  const auto mainThread = std::this_thread::get_id();
  std::atomic<bool> installed = false;
  std::atomic<int> looks = 0;
  CommandLinePorts ports{[&] {
                           EXPECT_NE(std::this_thread::get_id(), mainThread);
                           ++looks;
                           CommandLineToolState view;
                           view.installDirectory = "/d";
                           view.installedHere = installed;
                           return view;
                         },
                         [&] {
                           EXPECT_NE(std::this_thread::get_id(), mainThread);
                           installed = true;
                         },
                         [&] { installed = false; }};
  CommandLineCard card(ports, "");
  EXPECT_EQ(looks, 0) << "not before it is seen";
  card.show();
  auto& install = child<QPushButton>(card, "install");
  auto& uninstall = child<QPushButton>(card, "uninstall");
  ASSERT_TRUE(runUntil([&] { return install.isVisible() && install.isEnabled(); }));
  install.click();
  EXPECT_FALSE(install.isEnabled()) << "one thing at a time";
  ASSERT_TRUE(runUntil([&] { return uninstall.isVisible(); }));
  EXPECT_TRUE(installed);
  uninstall.click();
  ASSERT_TRUE(runUntil([&] { return install.isVisible(); }));
  EXPECT_FALSE(installed);
  EXPECT_EQ(looks, 3);
}

TEST_F(CommandLineTest, showsWhatWentWrong) {
  const auto fails = [](const char* why) { throw std::runtime_error(why); };
  CommandLineToolState view;
  view.installDirectory = "/d";
  CommandLineCard card(
      {[&] { return view; }, [&] { fails("The link /d/nimbra does not resolve to a runnable file."); }, {}}, "");
  card.show();
  auto& install = child<QPushButton>(card, "install");
  ASSERT_TRUE(runUntil([&] { return install.isVisible() && install.isEnabled(); }));
  install.click();
  EXPECT_TRUE(runUntil([&] { return sentences(card).contains("does not resolve"); }));
  EXPECT_TRUE(install.isEnabled()) << "to be tried again";

  CommandLineCard blind({[&]() -> CommandLineToolState { throw std::runtime_error("the shell is broken"); }, {}, {}},
                        "");
  blind.show();
  EXPECT_TRUE(runUntil([&] { return sentences(blind).contains("the shell is broken"); }));
}

TEST_F(CommandLineTest, mayBeDestroyedWhileItLooks) {
  struct Gate {
    std::mutex lock;
    std::condition_variable opened;
    bool open = false;
    int passed = 0;
  };
  const auto gate = std::make_shared<Gate>();
  auto card = std::make_unique<CommandLineCard>(CommandLinePorts{[gate] {
                                                                   std::unique_lock guard(gate->lock);
                                                                   gate->opened.wait(guard, [&] { return gate->open; });
                                                                   ++gate->passed;
                                                                   return CommandLineToolState();
                                                                 },
                                                                 {},
                                                                 {}},
                                                "");
  card->show();
  runFor(50);
  EXPECT_TRUE(sentences(*card).contains("Looking")) << "the window goes on meanwhile";
  card.reset();
  {
    const std::lock_guard guard(gate->lock);
    gate->open = true;
  }
  gate->opened.notify_all();
  EXPECT_TRUE(runUntil([&] {
    const std::lock_guard guard(gate->lock);
    return gate->passed == 1;
  }));
  runFor(50);
}

TEST_F(CommandLineTest, copiesTheExample) {
  AgentCard card;
  card.show();
  const std::string example =
      "nimbra busy\npytest && nimbra ok || nimbra fail\nnimbra palette \"#ff0055\" \"#ffcc00\" \"#00ddff\"";
  EXPECT_EQ(card.findChild<VerbatimText*>()->toPlainText().toStdString(), example);
  QGuiApplication::clipboard()->clear();
  card.findChild<QPushButton*>()->click();
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), example);
}

TEST_F(CardsFixture, theLoginItemIsShownAsItReallyIs) {
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
  EXPECT_TRUE(sentences(card).contains("This could not be changed: /autostart: No space left on device"));
}

class ReadoutTest : public CardsFixture {
 protected:
  Readouts readouts_;
  int asked_ = 0;
  QWidget window_;
  ReadoutTicker* ticker_ = new ReadoutTicker(&window_, [this] {
    ++asked_;
    return readouts_;
  });
};

TEST_F(ReadoutTest, asksOnlyWhileTheWindowIsSeen) {
  runFor(2 * ReadoutTicker::intervalMs);
  EXPECT_EQ(asked_, 0);
  window_.show();
  EXPECT_EQ(asked_, 1) << "at once";
  EXPECT_TRUE(runUntil([&] { return asked_ >= 4; }, 5000));
  window_.setWindowState(Qt::WindowMinimized);
  runFor(20);
  const int minimised = asked_;
  runFor(2 * ReadoutTicker::intervalMs);
  EXPECT_EQ(asked_, minimised);
  window_.setWindowState(Qt::WindowNoState);
  EXPECT_TRUE(runUntil([&] { return asked_ > minimised; }, 5000));
  window_.hide();
  const int hidden = asked_;
  runFor(2 * ReadoutTicker::intervalMs);
  EXPECT_EQ(asked_, hidden);
}

TEST_F(ReadoutTest, cardsShowWhatIsToldAndNothingElse) {
  using Make = ReadoutCard* (*)(ReadoutTicker&, QWidget*);
  struct Case {
    Make make;
    std::vector<std::string Readouts::*> lines;
    bool silent;  ///< hides while there is nothing to tell
  };
  const std::vector<Case> cases{
      {&ReadoutCard::makeStatus, {&Readouts::darkness, &Readouts::hint, &Readouts::figures, &Readouts::capture}, false},
      {&ReadoutCard::makeNotch, {&Readouts::cutout}, true},
      {&ReadoutCard::makeWeather, {&Readouts::weather, &Readouts::weatherError}, false},
      {&ReadoutCard::makeAudio, {&Readouts::audio}, false},
      {&ReadoutCard::makePointer, {&Readouts::pointer}, true}};
  window_.show();
  for (const Case& c : cases) {
    readouts_ = {};
    ReadoutCard* card = c.make(*ticker_, &window_);
    SCOPED_TRACE(card->title().toStdString());
    card->show();
    const auto waitForAsk = [&, from = asked_] { return runUntil([&] { return asked_ > from; }); };
    waitForAsk();
    for (const auto line : c.lines) readouts_.*line = "what is told";
    EXPECT_TRUE(runUntil([&] {
      return sentences(*card).count("what is told") == static_cast<qsizetype>(c.lines.size()) && card->isVisible();
    }));
    readouts_ = {};
    EXPECT_TRUE(runUntil([&] { return !sentences(*card).contains("what is told"); }));
    EXPECT_EQ(card->isVisible(), !c.silent);
    card->hide();
    runFor(ReadoutTicker::intervalMs + 100);
    EXPECT_FALSE(card->isVisible()) << "who hides it is not overruled";
    delete card;
  }
  ReadoutCard* sound = ReadoutCard::makeAudio(*ticker_, &window_);
  sound->show();
  EXPECT_TRUE(sentences(*sound).contains("never a microphone. Nothing is recorded or sent anywhere."));
}

TEST_F(CardsFixture, systemFactsAreFollowedAndLeadToTheirPanes) {
  FakeSystem system;
  system.opens = true;
  OneTimer timers;
  SystemState state(system, timers);
  QWidget window;
  auto* card = new SystemFactsCard(state, {}, &window);
  auto* tinted = new SystemFactsCard(state, {SystemPane::accessibilityDisplay, true}, &window);
  window.show();
  EXPECT_TRUE(sentences(*card).contains("Transparency is not reduced."));
  EXPECT_TRUE(sentences(*card).contains("Contrast is not increased."));
  EXPECT_FALSE(sentences(*card).contains("Glass"));
  system.now = {true, true, 0.25};
  system.changed();
  EXPECT_TRUE(sentences(*card).contains("Transparency is reduced."));
  EXPECT_TRUE(sentences(*card).contains("Contrast is increased."));
  EXPECT_TRUE(sentences(*tinted).contains("Glass is tinted (0.25)"));
  const std::tuple<SystemFactsCard*, const char*, SystemPane> panes[] = {
      {card, "openTransparency", SystemPane::appearance},
      {tinted, "openTransparency", SystemPane::accessibilityDisplay},
      {tinted, "openContrast", SystemPane::accessibilityDisplay},
      {tinted, "openTint", SystemPane::appearance},
      {tinted, "openMenuBar", SystemPane::menuBar},
      {tinted, "openWallpaper", SystemPane::wallpaper}};
  for (const auto& [where, button, pane] : panes) {
    child<QPushButton>(*where, button).click();
    EXPECT_EQ(system.opened.back(), pane) << button;
  }
  system.opens = false;
  child<QPushButton>(*card, "openContrast").click();
  EXPECT_TRUE(sentences(*card).contains("No settings program."));
  system.opens = true;
  child<QPushButton>(*card, "openContrast").click();
  EXPECT_FALSE(sentences(*card).contains("No settings program."));
}

}  // namespace
}  // namespace veloria::tests
