// The script editor: what is right gets into the record, what is not never does.

#include <QClipboard>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>

#include "scene/BuiltInScripts.h"
#include "scene/LanguageCard.h"
#include "scene/ScriptReport.h"
#include "settings/SettingsCodec.h"
#include "ui/script/ScriptCard.h"
#include "ui/script/VerbatimText.h"
#include "ui_cards_fixture.h"

namespace veloria::tests {
namespace {

class ScriptCardTest : public CardsFixture {
 protected:
  void SetUp() override { open(); }

  void open() {
    card_ = std::make_unique<ScriptCard>(editor_, draft_);
    card_->resize(500, 600);
    card_->show();
    QApplication::setActiveWindow(card_.get());
  }
  ScriptEditor& text() { return *card_->findChild<ScriptEditor*>(); }
  QString error() { return child<QLabel>(*card_, "scriptError").text().remove(QChar(0x200B)); }
  bool shows(const char* label) { return child<QLabel>(*card_, label).isVisible(); }

  void type(const QString& script) {
    text().setFocus();
    text().selectAll();
    text().insertPlainText(script);
  }
  void paste(const QString& script) {
    QGuiApplication::clipboard()->setText(script);
    text().setFocus();
    text().selectAll();
    text().paste();
  }
  bool stored(const std::string& script) {
    return runUntil([&] { return config().customScript == script; }, 60000);
  }

  ScriptDraft draft_;
  std::unique_ptr<ScriptCard> card_;
};

TEST_F(ScriptCardTest, rightTextIsStoredAfterAPauseAndNotBefore) {
  type("set exposure 2");
  runFor(ScriptCard::checkMs + 50);
  EXPECT_EQ(config().customScript, "");
  EXPECT_TRUE(stored("set exposure 2"));
  EXPECT_FALSE(draft_.text);
  EXPECT_FALSE(shows("scriptError"));
}

TEST_F(ScriptCardTest, wrongTextIsMarkedAndNeverStored) {
  type("set exposure 2");
  ASSERT_TRUE(stored("set exposure 2"));
  const std::vector<std::tuple<const char*, int, const char*>> cases{
      {"# fine\nset glow 1\nbind glw = 1", 3, "Line 3: unknown parameter 'glw'"},
      {"nonsense", 1, "Line 1: unknown command 'nonsense'"},
      {"\n\n\n\nset exposure loud\nset", 5, "Line 5: 'loud' is not a number"}};
  for (const auto& [script, line, message] : cases) {
    type(script);
    EXPECT_TRUE(runUntil([&, wanted = message] { return error() == wanted; }, 5000)) << error().toStdString();
    EXPECT_EQ(text().markedLine(), line);
    ASSERT_EQ(text().extraSelections().size(), 1);
    EXPECT_EQ(text().extraSelections().front().cursor.blockNumber(), line - 1);
    EXPECT_EQ(text().accessibleDescription(), message);
    runFor(ScriptCard::storeMs + 200);
    EXPECT_EQ(config().customScript, "set exposure 2");
    EXPECT_TRUE(shows("scriptState"));
  }
  type("set exposure 3");
  EXPECT_TRUE(stored("set exposure 3"));
  EXPECT_TRUE(text().extraSelections().isEmpty());
  EXPECT_FALSE(shows("scriptState"));
}

TEST_F(ScriptCardTest, leavingTheEditorOrTheWindowStoresAtOnce) {
  type("set glow 1");
  child<VerbatimText>(*card_, "").setFocus();
  EXPECT_TRUE(runUntil([&] { return config().customScript == "set glow 1"; }, ScriptCard::storeMs - 200));
  type("set glow 2");
  card_->hide();
  EXPECT_EQ(config().customScript, "set glow 2");
}

TEST_F(ScriptCardTest, wrongTextOutlivesTheWindow) {
  type("set glow 1");
  ASSERT_TRUE(stored("set glow 1"));
  type("set glow one");
  card_->hide();
  card_.reset();
  EXPECT_EQ(config().customScript, "set glow 1");
  open();
  EXPECT_EQ(text().toPlainText(), "set glow one");
  EXPECT_TRUE(runUntil([&] { return shows("scriptState"); }, 5000));
  EXPECT_EQ(error(), "Line 1: 'one' is not a number");
  editor_.change("customScript", [](NimbraConfig& c) { c.customScript = "set glow 3"; });
  EXPECT_EQ(text().toPlainText(), "set glow one") << "somebody else's change does not wipe it out";
  child<QPushButton>(*card_, "discardDraft").click();
  EXPECT_EQ(text().toPlainText(), "set glow 3");
  EXPECT_TRUE(runUntil([&] { return error().isEmpty(); }, 5000));
  text().undo();
  EXPECT_EQ(text().toPlainText(), "set glow one") << "the editor's undo has it still";
}

TEST_F(ScriptCardTest, changesOfOthersAreShown) {
  editor_.change("customScript", [](NimbraConfig& c) { c.customScript = "set glow 3"; });
  EXPECT_EQ(text().toPlainText(), "set glow 3");
  editor_.undo();
  EXPECT_EQ(text().toPlainText(), "");
  editor_.change("customScript", [](NimbraConfig& c) { c.customScript = "rubbish"; });
  EXPECT_TRUE(runUntil([&] { return error() == "Line 1: unknown command 'rubbish'"; }, 5000));
  EXPECT_FALSE(shows("scriptState")) << "that is in use";
  runFor(ScriptCard::storeMs + 100);
  EXPECT_EQ(config().customScript, "rubbish") << "showing changes nothing";
}

TEST_F(ScriptCardTest, aBuiltInScriptCanBeTakenInOneStep) {
  auto& button = child<QPushButton>(*card_, "editAsCustomScript");
  for (const Visualizer mode : {Visualizer::music, Visualizer::agent, Visualizer::weather, Visualizer::wind}) {
    editor_.change("start", [&](NimbraConfig& c) {
      c.visualizer = mode;
      c.customScript = "set glow 3";
    });
    const NimbraConfig before = config();
    ASSERT_TRUE(button.isVisible());
    button.click();
    EXPECT_EQ(config().customScript, builtInScript(mode));
    EXPECT_EQ(config().visualizer, Visualizer::script);
    EXPECT_EQ(text().toPlainText().toStdString(), builtInScript(mode));
    EXPECT_TRUE(shows("scriptNotice")) << "it says that the old one is replaced";
    EXPECT_FALSE(button.isVisible());
    editor_.undo();
    EXPECT_EQ(config(), before);
    EXPECT_EQ(text().toPlainText(), "set glow 3");
  }
  editor_.change("visualizer", [](NimbraConfig& c) { c.visualizer = Visualizer::autonomous; });
  EXPECT_FALSE(button.isVisible()) << "it has none";
}

TEST_F(ScriptCardTest, aBuiltInScriptReplacesADraftThatTheEditorCanBringBack) {
  type("set glow one");
  runFor(ScriptCard::checkMs + 100);
  editor_.change("visualizer", [](NimbraConfig& c) { c.visualizer = Visualizer::wind; });
  child<QPushButton>(*card_, "editAsCustomScript").click();
  EXPECT_EQ(text().toPlainText().toStdString(), builtInScript(Visualizer::wind));
  runFor(ScriptCard::storeMs + 200);
  EXPECT_EQ(config().customScript, builtInScript(Visualizer::wind));
  text().undo();
  EXPECT_EQ(text().toPlainText(), "set glow one");
}

TEST_F(ScriptCardTest, largePastesNeitherFreezeNorGetLost) {
  const QString line = "bind exposure = 0.75 + level * 1.4 # and a remark\n";
  const QString large = line.repeated(static_cast<int>(900 * 1024 / line.size()));
  paste(large);
  EXPECT_TRUE(stored(large.toStdString()));

  paste(line.repeated(static_cast<int>(1048570 / line.size())));  // right, but no room for the other settings
  EXPECT_TRUE(runUntil([&] { return error().contains("too long"); }, 60000));
  EXPECT_TRUE(config().customScript == large.toStdString()) << "what was stored before stays";
  EXPECT_TRUE(encodeSettings(config()));

  for (const QString& refused : {line.repeated(30000), QString(1024 * 1024, 'x'), QString(100 << 20, 'x')}) {
    const QString before = text().toPlainText();
    paste(refused);
    EXPECT_TRUE(text().toPlainText() == before);
    EXPECT_TRUE(shows("scriptNotice"));
  }
}

TEST_F(ScriptCardTest, whatIsTooLongToEditIsLeftAlone) {
  const std::string huge = "# " + std::string(900000, 'x');
  editor_.change("customScript", [&](NimbraConfig& c) { c.customScript = huge; });
  EXPECT_TRUE(text().isReadOnly());
  EXPECT_TRUE(error().contains("too long"));
  card_->hide();
  EXPECT_TRUE(config().customScript == huge);
  editor_.change("customScript", [](NimbraConfig& c) { c.customScript = "set glow 1"; });
  EXPECT_FALSE(text().isReadOnly());
  EXPECT_EQ(text().toPlainText(), "set glow 1");
}

TEST_F(ScriptCardTest, linesAreCountedAsTheLanguageCountsThem) {
  paste(QString::fromUtf8("set glow 1\r\nset glow 1\vset glow 1\xE2\x80\xA8wrong"));
  EXPECT_TRUE(runUntil([&] { return error().startsWith("Line 4:"); }, 5000)) << error().toStdString();
  EXPECT_EQ(text().document()->findBlockByNumber(text().markedLine() - 1).text(), "wrong");
}

TEST_F(ScriptCardTest, longMessagesAreCutShort) {
  type(QString(5000, 'x'));
  EXPECT_TRUE(runUntil([&] { return !error().isEmpty(); }, 5000));
  EXPECT_LT(error().size(), 400);
  EXPECT_LE(card_->minimumSizeHint().width(), 400);
}

TEST_F(ScriptCardTest, theLanguageIsThereWordForWord) {
  const auto& language = child<VerbatimText>(*card_, "");
  EXPECT_EQ(language.toPlainText().toStdString(), languageCard);
  EXPECT_TRUE(language.isReadOnly());
  EXPECT_EQ(language.verticalScrollBar()->maximum(), 0) << "all of it is seen";
}

TEST_F(ScriptCardTest, mayBeDestroyedWhileItsTextIsChecked) {
  for (int i = 0; i < 2; ++i) {
    type(QString("set glow 1\n").repeated(80000));
    runFor(ScriptCard::checkMs + 20);
    card_.reset();
    EXPECT_FALSE(draft_.text) << "it was right, so it is stored";
    open();
  }
  runFor(300);
}

}  // namespace
}  // namespace veloria::tests
