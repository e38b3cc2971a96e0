// Looks, palettes, drive modes: what a person chooses is what the record gets, and what the record has is what is
// shown.

#include <QCheckBox>
#include <QColorDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "settings/GlassTuning.h"
#include "ui/cards/DriveModeChooser.h"
#include "ui/cards/GlassCard.h"
#include "ui/cards/PaletteEditor.h"
#include "ui/cards/PaletteGallery.h"
#include "ui/cards/PresetGallery.h"
#include "ui/controls/Swatch.h"
#include "ui/preview/PreviewPainter.h"
#include "ui_cards_fixture.h"

namespace veloria::tests {
namespace {

class ChoiceTest : public CardsFixture {
 protected:
  /// The names of the tiles that are marked.
  static QStringList marked(const QWidget& gallery) {
    QStringList names;
    for (const Tile* tile : gallery.findChildren<Tile*>()) {
      if (tile->isChecked()) names += tile->objectName();
    }
    return names;
  }

  static void type(QLineEdit& field, const char* text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClick(&field, Qt::Key_Delete);
    QTest::keyClicks(&field, QString::fromLatin1(text));
  }
};

class PresetGalleryTest : public ChoiceTest {
 protected:
  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
  PresetGallery gallery_{editor_, pictures_};
};

TEST_F(PresetGalleryTest, choosingPutsTheLookIntoTheRecordAndMarksIt) {
  editor_.change("tempo", [](NimbraConfig& c) { c.tempo = 1.7; });
  EXPECT_EQ(marked(gallery_), QStringList());
  for (const LookPreset& preset : LookPreset::all()) {
    const NimbraConfig before = config();
    child<Tile>(gallery_, std::string(preset.name).c_str()).click();
    EXPECT_EQ(config(), choose(before, preset));
    EXPECT_EQ(marked(gallery_), QStringList(QString::fromUtf8(preset.name.data())));
  }
  child<Tile>(gallery_, "Rave").click();
  EXPECT_EQ(marked(gallery_), QStringList("Rave")) << "a second click takes nothing back";
  editor_.change("exposure", [](NimbraConfig& c) { c.exposure += 0.1; });
  EXPECT_EQ(marked(gallery_), QStringList()) << "another look now";
  editor_.undo();
  EXPECT_EQ(marked(gallery_), QStringList("Rave"));
  editor_.undo();
  EXPECT_EQ(marked(gallery_), QStringList("Flurry")) << "each choice is one step";
}

TEST_F(PresetGalleryTest, keysMoveAndChoose) {
  gallery_.resize(400, 900);
  gallery_.show();
  QApplication::setActiveWindow(&gallery_);
  Tile& first = child<Tile>(gallery_, "Northern Lights");
  first.setFocus();
  const auto press = [](int key) { QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key)); };
  const auto focused = [] { return QApplication::focusWidget()->objectName(); };
  press(Qt::Key_Left);
  EXPECT_EQ(focused(), "Northern Lights") << "there is none before the first";
  press(Qt::Key_Right);
  EXPECT_EQ(focused(), "Geomagnetic Storm");
  press(Qt::Key_Down);
  EXPECT_EQ(focused(), "Deep Nebula") << "two in a row here";
  EXPECT_EQ(config(), NimbraConfig()) << "moving chooses nothing";
  press(Qt::Key_Return);
  EXPECT_EQ(config(), choose(NimbraConfig(), LookPreset::all()[3]));
  press(Qt::Key_Up);
  press(Qt::Key_Space);
  EXPECT_EQ(config(), choose(NimbraConfig(), LookPreset::all()[1]));
  int stops = 0;
  for (const Tile* tile : gallery_.findChildren<Tile*>()) stops += (tile->focusPolicy() & Qt::TabFocus) != 0 ? 1 : 0;
  EXPECT_EQ(stops, 1) << "one stop of the tab key";
}

TEST_F(ChoiceTest, aBuiltInPaletteTakesThePlaceOfOnesOwnWhichStaysAtHand) {
  const Palette own{"Rose Quartz", {4, {1, 1, 1}}};
  PaletteGallery gallery(editor_);
  EXPECT_EQ(marked(gallery), QStringList("Classic Nimbra"));
  EXPECT_TRUE(child<Tile>(gallery, "ownPalette").isHidden()) << "there is none yet";
  for (const Palette& palette : Palette::presets()) {
    editor_.change("own", [&](NimbraConfig& c) { c.customPalette = own; });
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
  editor_.change("paletteName", [](NimbraConfig& c) { c.paletteName = "no such palette"; });
  EXPECT_EQ(marked(gallery), QStringList("Classic Nimbra")) << "what is drawn then";
}

TEST_F(ChoiceTest, matchingTheDesktopPictureIsABox) {
  PaletteGallery gallery(editor_);
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

TEST_F(ChoiceTest, aColorMakesAPaletteOfOnesOwn) {
  editor_.change("paletteName", [](NimbraConfig& c) { c.paletteName = "Nebula"; });
  PaletteEditor card(editor_);
  card.show();
  const auto nebula = Palette::presets()[3];
  EXPECT_EQ(child<QLineEdit>(card, "hex1").text(), hexOf(nebula.stops[0]));
  EXPECT_FALSE(child<QPushButton>(card, "putAside").isEnabled());

  type(child<QLineEdit>(card, "hex2"), "#ff8000");
  ASSERT_TRUE(config().customPalette);
  EXPECT_EQ(config().customPalette->name, "Custom");
  EXPECT_EQ(hexOf(config().customPalette->stops[1]), "#ff8000");
  EXPECT_EQ(config().customPalette->stops[0], nebula.stops[0]) << "the others are exactly as they were";
  EXPECT_EQ(config().customPalette->stops[3], nebula.stops[3]);

  child<QPushButton>(card, "putAside").click();
  EXPECT_EQ(config().palette(), nebula);
  EXPECT_EQ(hexOf(editor_.ownPalette()->stops[1]), "#ff8000");
  child<QPushButton>(card, "copyPalette").click();
  ASSERT_TRUE(config().customPalette);
  EXPECT_EQ(config().customPalette->stops, nebula.stops);
}

TEST_F(ChoiceTest, whatIsNoColorChangesNothingAndIsExplained) {
  PaletteEditor card(editor_);
  card.show();
  auto& field = child<QLineEdit>(card, "hex3");
  for (const char* text : {"", "#12", "red", "#12345g", "######", "#1234567"}) {
    type(field, text);
    QTest::keyClick(&field, Qt::Key_Return);
    if (std::string(text) == "#1234567") continue;  // the field takes seven characters
    EXPECT_FALSE(config().customPalette) << text;
    EXPECT_TRUE(sentences(card).contains("six digits")) << text;
  }
  EXPECT_EQ(hexOf(config().palette().stops[2]), "#123456");
  EXPECT_FALSE(sentences(card).contains("six digits"));
}

TEST_F(ChoiceTest, aPaletteEditorMayGoWhileAFieldHasTheFocus) {
  auto card = std::make_unique<PaletteEditor>(editor_);
  card->show();
  QApplication::setActiveWindow(card.get());
  type(child<QLineEdit>(*card, "hex1"), "#12");
  card.reset();
  EXPECT_EQ(config(), NimbraConfig());
}

TEST_F(ChoiceTest, theColorDialogIsFollowedWhileItIsOpen) {
  PaletteEditor card(editor_);
  card.show();
  for (const bool accept : {true, false}) {
    SCOPED_TRACE(accept);
    const auto before = config().customPalette;
    child<QPushButton>(card, "colour4").click();
    auto* dialog = card.findChild<QColorDialog*>();
    ASSERT_NE(dialog, nullptr);
    dialog->setCurrentColor(accept ? QColor(1, 2, 3) : QColor(200, 0, 200));
    EXPECT_EQ(hexOf(config().palette().stops[3]), accept ? "#010203" : "#c800c8");
    accept ? dialog->accept() : dialog->reject();
    if (accept) {
      EXPECT_EQ(hexOf(config().palette().stops[3]), "#010203");
    } else {
      EXPECT_EQ(config().customPalette, before) << "cancelled";
    }
    runUntil([&] { return card.findChild<QColorDialog*>() == nullptr; }, 2000);
  }
}

TEST_F(ChoiceTest, aPaletteOfTooFewColorsIsNoCrash) {
  editor_.change("odd", [](NimbraConfig& c) { c.customPalette = Palette{"short", {{1, 0, 0}}}; });
  PaletteEditor card(editor_);
  PaletteGallery gallery(editor_);
  card.show();
  type(child<QLineEdit>(card, "hex4"), "#010203");
  EXPECT_EQ(config().customPalette->stops.size(), 4U);
}

TEST_F(ChoiceTest, glassTuningsAreOneStepEach) {
  GlassCard card(editor_);
  for (const GlassTuning& tuning : GlassTuning::all()) {
    NimbraConfig wanted = config();
    tuning.apply(wanted);
    child<QPushButton>(card, std::string(tuning.title).c_str()).click();
    EXPECT_EQ(config(), wanted);
  }
  editor_.undo();
  editor_.undo();
  EXPECT_EQ(config(), NimbraConfig());
}

TEST_F(ChoiceTest, driveModesHaveAButtonEachWithItsLine) {
  DriveModeChooser chooser(editor_);
  chooser.show();
  for (std::size_t i = 0; i < rawValues<Visualizer>.size(); ++i) {
    const auto mode = static_cast<Visualizer>(i);
    auto& button = child<QRadioButton>(chooser, std::string(rawValue(mode)).c_str());
    button.click();
    EXPECT_EQ(config().visualizer, mode);
    EXPECT_TRUE(sentences(chooser).contains(QString::fromUtf8(description(mode).data())));
    EXPECT_EQ(button.accessibleDescription(), QString::fromUtf8(description(mode).data()));
  }
  editor_.change("visualizer", [](NimbraConfig& c) { c.visualizer = Visualizer::weather; });
  EXPECT_TRUE(child<QRadioButton>(chooser, "weather").isChecked());
}

}  // namespace
}  // namespace veloria::tests
