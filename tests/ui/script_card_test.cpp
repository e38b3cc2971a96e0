// The script editor: what is right gets into the record, what is not never does.

#include "ui/script/ScriptCard.h"

#include <QClipboard>
#include <QPushButton>
#include <QTextBlock>

#include "UiFixture.h"
#include "scene/BuiltInScripts.h"
#include "ui/script/VerbatimText.h"

namespace veloria::tests {
namespace {

class ScriptCardTest : public UiFixture {
 protected:
  void SetUp() override { open(); }

  void open() {
    card_ = std::make_unique<ScriptCard>(editor_, draft_);
    card_->resize(500, 600);
    card_->show();
    QApplication::setActiveWindow(card_.get());
  }
  ScriptEditor& text() { return *card_->findChild<ScriptEditor*>(); }
  std::string shownText() { return text().toPlainText().toStdString(); }
  std::string error() { return child<QLabel>(*card_, "scriptError").text().remove(QChar(0x200B)).toStdString(); }
  bool shows(const char* label) { return child<QLabel>(*card_, label).isVisible(); }

  void write(const QString& script) {
    text().setFocus();
    text().selectAll();
    text().insertPlainText(script);
  }
  void paste(const QString& script) {
    QGuiApplication::clipboard()->setText(script);
    text().selectAll();
    text().paste();
  }
  void change(const std::string& script) {
    editor_.change("customScript", [&](NimbraConfig& c) { c.customScript = script; });
  }
  bool stored(const std::string& script) {
    return runUntil([&] { return config().customScript == script; }, 60000);
  }
  bool complains(const std::string& message) {
    return runUntil([&] { return error() == message; }, 5000);
  }

  ScriptDraft draft_;
  std::unique_ptr<ScriptCard> card_;
};

TEST_F(ScriptCardTest, RightTextIsStoredAfterAPauseAndWrongTextIsMarkedAndNeverStored) {
  write("set exposure 2");
  QTest::qWait(ScriptCard::checkMs + 50);
  EXPECT_EQ(config().customScript, "");
  EXPECT_TRUE(stored("set exposure 2"));
  write("# fine\nset glow 1\nbind glw = 1");
  EXPECT_TRUE(complains("Line 3: unknown parameter 'glw'")) << error();
  EXPECT_EQ(text().markedLine(), 3);
  EXPECT_TRUE(shows("scriptState"));
  QTest::qWait(ScriptCard::storeMs + 100);
  EXPECT_EQ(config().customScript, "set exposure 2");
  write("set exposure 3");
  EXPECT_TRUE(stored("set exposure 3"));
  EXPECT_EQ(text().markedLine(), 0);
}

TEST_F(ScriptCardTest, LeavingTheEditorOrTheWindowStoresAtOnce) {
  write("set glow 1");
  child<VerbatimText>(*card_, "").setFocus();
  EXPECT_TRUE(runUntil([&] { return config().customScript == "set glow 1"; }, ScriptCard::storeMs - 200));
  write("set glow 2");
  card_->hide();
  EXPECT_EQ(config().customScript, "set glow 2");
}

TEST_F(ScriptCardTest, WrongTextOutlivesTheWindow) {
  write("set glow one");
  card_.reset();
  EXPECT_EQ(config().customScript, "");
  open();
  EXPECT_EQ(shownText(), "set glow one");
  EXPECT_TRUE(complains("Line 1: 'one' is not a number"));
  change("set glow 3");
  EXPECT_EQ(shownText(), "set glow one") << "somebody else's change does not wipe it out";
  child<QPushButton>(*card_, "discardDraft").click();
  EXPECT_EQ(shownText(), "set glow 3");
  text().undo();
  EXPECT_EQ(shownText(), "set glow one") << "the editor's undo has it still";
}

TEST_F(ScriptCardTest, ChangesOfOthersAreShown) {
  change("rubbish");
  EXPECT_EQ(shownText(), "rubbish");
  EXPECT_TRUE(complains("Line 1: unknown command 'rubbish'"));
  editor_.undo();
  EXPECT_EQ(shownText(), "");
}

TEST_F(ScriptCardTest, ABuiltInScriptCanBeTakenInOneStepAndADraftComesBack) {
  change("set glow 3");
  editor_.change("visualizer", [](NimbraConfig& c) { c.visualizer = Visualizer::wind; });
  const NimbraConfig before = config();
  auto& button = child<QPushButton>(*card_, "editAsCustomScript");
  write("set glow one");
  EXPECT_TRUE(complains("Line 1: 'one' is not a number"));
  button.click();
  EXPECT_EQ(config().customScript, builtInScript(Visualizer::wind));
  EXPECT_EQ(config().visualizer, Visualizer::script);
  EXPECT_EQ(shownText(), builtInScript(Visualizer::wind));
  EXPECT_TRUE(shows("scriptNotice")) << "it says that the old one is replaced";
  EXPECT_FALSE(button.isVisible());
  text().undo();
  EXPECT_EQ(shownText(), "set glow one");
  child<QPushButton>(*card_, "discardDraft").click();
  editor_.undo();
  EXPECT_EQ(config(), before);
  EXPECT_EQ(shownText(), "set glow 3");
}

TEST_F(ScriptCardTest, LargePastesNeitherFreezeNorGetLost) {
  const QString line = "bind exposure = 0.75 + level * 1.4 # and a remark\n";
  const QString large = line.repeated(static_cast<int>(900 * 1024 / line.size()));
  paste(large);
  EXPECT_TRUE(stored(large.toStdString()));
  paste(line.repeated(static_cast<int>(1048570 / line.size())));  // right, but no room for the other settings
  EXPECT_TRUE(runUntil([&] { return error().find("too long") != std::string::npos; }, 60000));
  EXPECT_TRUE(config().customScript == large.toStdString()) << "what was stored before stays";
  for (const QString& refused : {line.repeated(30000), QString(1024 * 1024, 'x'), QString(100 << 20, 'x')}) {
    const QString before = text().toPlainText();
    paste(refused);
    EXPECT_TRUE(text().toPlainText() == before);
    EXPECT_TRUE(shows("scriptNotice"));
  }
}

TEST_F(ScriptCardTest, WhatIsTooLongToEditIsLeftAlone) {
  const std::string huge = "# " + std::string(900000, 'x');
  change(huge);
  EXPECT_TRUE(text().isReadOnly());
  card_->hide();
  EXPECT_TRUE(config().customScript == huge);
  change("set glow 1");
  EXPECT_FALSE(text().isReadOnly());
}

TEST_F(ScriptCardTest, LinesAreCountedAsTheLanguageCountsThem) {
  paste(QString::fromUtf8("set glow 1\r\nset glow 1\vset glow 1\xE2\x80\xA8wrong"));
  EXPECT_TRUE(complains("Line 4: unknown command 'wrong'")) << error();
  EXPECT_EQ(text().document()->findBlockByNumber(text().markedLine() - 1).text(), "wrong");
}

TEST_F(ScriptCardTest, MayBeDestroyedWhileItsTextIsChecked) {
  write(QString("set glow 1\n").repeated(20000));
  QTest::qWait(ScriptCard::checkMs + 20);
  card_.reset();
  EXPECT_FALSE(draft_.text) << "it was right, so it is stored";
  QThreadPool::globalInstance()->waitForDone();
  QTest::qWait(10);
}

}  // namespace
}  // namespace veloria::tests
