#include <QAbstractButton>
#include <QLabel>
#include <QScrollArea>
#include <QTranslator>

#include "Palettes.h"
#include "SettingsWindowTest.h"

namespace veloria {
namespace {

/// A language whose words are 60 % longer.
class LongWords : public QTranslator {
 public:
  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* text, const char*, int) const override {
    QString longer;
    double extra = 0;
    for (const QChar c : QString::fromUtf8(text)) {
      longer += c;
      extra += 0.6;
      // What is filled in later has to stay as it is.
      if (extra < 1 || !c.isLetter()) continue;
      longer += c;
      extra -= 1;
    }
    return '[' + longer + ']';
  }
};

struct FitCase {
  const char* name;
  bool longWords;
  double fontScale;
  int width;
};

class SettingsFitTest : public SettingsWindowTest, public testing::WithParamInterface<FitCase> {
 protected:
  void SetUp() override {
    font_ = QApplication::font();
    QFont font = font_;
    font.setPointSizeF(font.pointSizeF() * GetParam().fontScale);
    QApplication::setFont(font);
    if (GetParam().longWords) QCoreApplication::installTranslator(&translator_);
  }
  void TearDown() override {
    window.reset();
    QCoreApplication::removeTranslator(&translator_);
    QApplication::setFont(font_);
  }

  void expectNothingClipped() {
    for (const QLabel* label : window->findChildren<QLabel*>()) {
      if (!label->isVisible() || label->text().isEmpty()) continue;
      EXPECT_LE(label->minimumSizeHint().width(), label->width()) << label->text().toStdString();
      const int needed = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
      EXPECT_LE(needed, label->height()) << label->text().toStdString();
    }
    for (const QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
      if (!button->isVisible() || button->parentWidget()->inherits("QLineEdit")) continue;
      EXPECT_LE(button->sizeHint().width(), button->width()) << button->accessibleName().toStdString();
      EXPECT_LE(button->sizeHint().height(), button->height()) << button->accessibleName().toStdString();
    }
  }

  void expectNothingSideways() {
    for (const QScrollArea* page : window->findChildren<QScrollArea*>()) {
      if (!page->isVisible()) continue;
      EXPECT_LE(page->widget()->width(), page->viewport()->width());
    }
    for (const QWidget* child : window->findChildren<QWidget*>()) {
      if (!child->isVisible()) continue;
      const int right = child->mapTo(window.get(), QPoint(child->width(), 0)).x();
      EXPECT_LE(right, window->width()) << child->metaObject()->className() << " " << child->objectName().toStdString();
    }
  }

 private:
  LongWords translator_;
  QFont font_;
};

TEST_P(SettingsFitTest, NothingIsClippedAndNothingScrollsSideways) {
  open();
  window->resize(GetParam().width, 520);
  for (int tab = 0; tab <= settingTabCount; ++tab) {
    SCOPED_TRACE(tab);
    if (tab < settingTabCount) {
      window->showTab(static_cast<SettingTab>(tab));
    } else {
      window->search(QStringLiteral("shadow"));
      QTest::qWait(10);
      window->search(GetParam().longWords ? QStringLiteral("glow") : QStringLiteral("e"));
    }
    QTest::qWait(10);
    EXPECT_EQ(window->width(), GetParam().width);
    ASSERT_FALSE(shownKeys().empty());
    expectNothingClipped();
    expectNothingSideways();
  }
}

INSTANTIATE_TEST_SUITE_P(Languages, SettingsFitTest,
                         testing::Values(FitCase{"English", false, 1, 400}, FitCase{"Narrow", false, 1, 360},
                                         FitCase{"LongWords", true, 1, 400}, FitCase{"LargeFont", false, 2, 400},
                                         FitCase{"LargeFontAndLongWords", true, 2, 400}),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// The contrast of two colours (WCAG 2, relative luminance).
double contrastOf(const QColor& a, const QColor& b) {
  const auto luminance = [](const QColor& c) {
    const auto linear = [](double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(c.redF()) + 0.7152 * linear(c.greenF()) + 0.0722 * linear(c.blueF());
  };
  const double one = luminance(a) + 0.05, two = luminance(b) + 0.05;
  return std::max(one, two) / std::min(one, two);
}

TEST_F(SettingsWindowTest, TextIsReadableInLightAndDarkAndWhenTheDesktopChanges) {
  open();
  const QPalette light = QApplication::palette();
  for (const QPalette& palette : {light, darkPalette(), light}) {
    QApplication::setPalette(palette);
    QTest::qWait(0);
    for (const QLabel* label : window->findChildren<QLabel*>()) {
      if (!label->isVisible()) continue;
      const QColor ink = label->palette().color(label->foregroundRole());
      EXPECT_GE(contrastOf(ink, window->palette().color(QPalette::Window)), 4.5) << label->text().toStdString();
    }
  }
}

}  // namespace
}  // namespace veloria
