// Room for every text: in a narrow window, with the long words of translations.

#include <QAbstractButton>
#include <QLineEdit>
#include <QTranslator>
#include <functional>

#include "../system/SystemFakes.h"
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
#include "ui/script/ScriptCard.h"
#include "ui_cards_fixture.h"

namespace veloria::tests {
namespace {

/// As if in a language that needs half as much room again.
class LongWords final : public QTranslator {
 public:
  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* text, const char*, int) const override {
    const QString source = QString::fromUtf8(text);
    return source + QLatin1Char(' ') + source.left(source.size() / 2).replace(QLatin1Char('%'), QLatin1Char('x'));
  }
};

class CardLayoutTest : public CardsFixture {
 protected:
  CardLayoutTest() {
    readouts_ = {.darkness = "Nothing is drawn: the display sleeps.",
                 .hint = "The panel is opaque, so the band behind it can't be seen. Draw it over the panel instead.",
                 .figures = "1.2 ms GPU · 60 fps · 634x32 grid",
                 .cutout = "Cutout 200 × 32 pt · menu bar 37 pt tall.",
                 .weather = "12°C · wind 9 mph · gusts 17 mph · cloud 75%",
                 .weatherError = "https://a-very-long-address.example/of/a/service/that/does/not/answer?latitude=1",
                 .audio = "Listening: level 0.31",
                 .picture = "/another/path/without/a/single/space/in/it/that/is/longer/than/the/window/is/wide.svg",
                 .capture = "/a/path/without/a/single/space/in/it/that/is/longer/than/the/window/is/wide",
                 .pointer = "This compositor does not tell where the pointer is.",
                 .script = {}};
    view_.resolvedPath = "/opt/of/another/program/with/a/long/path/bin/nimbra";
    view_.installDirectory = "/home/somebody/with/a/long/name/.local/bin";
    byHand_.manualCommand = "sudo ln -sf '/home/somebody/with/a/long/name/veloria/bin/nimbra' /usr/local/bin/nimbra";
    login_.registered = true;
    system_.now = {true, true, 1};
    state_.refresh();
    editor_.change("start", [](NimbraConfig& c) {
      c.visualizer = Visualizer::wind;
      c.customScript = "# mine\nset glow 2\nbind glw = 1";
      c.matchWallpaper = true;
      c = choose(c, LookPreset::all()[3]);
      c.paletteName = "Nebula";
    });
  }

  using Maker = std::function<QWidget*(QWidget*)>;
  std::vector<std::pair<std::string, Maker>> cards() {
    const auto commands = [](const CommandLineToolState& view) {
      return [&view](QWidget* p) {
        return new CommandLineCard({[&view] { return view; }, [] {}, [] {}}, "get it from a package", p);
      };
    };
    return {{"presets", [this](QWidget* p) { return new PresetGallery(editor_, pictures_, p); }},
            {"palettes",
             [this](QWidget* p) {
               auto* card = new PaletteGallery(editor_, p);
               card->follow(*ticker_);
               return card;
             }},
            {"palette-editor", [this](QWidget* p) { return new PaletteEditor(editor_, p); }},
            {"glass", [this](QWidget* p) { return new GlassCard(editor_, p); }},
            {"drive", [this](QWidget* p) { return new DriveModeChooser(editor_, p); }},
            {"script", [this](QWidget* p) { return new ScriptCard(editor_, draft_, p); }},
            {"agent", [](QWidget* p) { return new AgentCard(p); }},
            {"command", commands(view_)},
            {"command-by-hand", commands(byHand_)},
            {"login", [this](QWidget* p) { return new LoginItemCard(loginItem_, p); }},
            {"status", [this](QWidget* p) { return ReadoutCard::makeStatus(*ticker_, p); }},
            {"notch", [this](QWidget* p) { return ReadoutCard::makeNotch(*ticker_, p); }},
            {"weather", [this](QWidget* p) { return ReadoutCard::makeWeather(*ticker_, p); }},
            {"audio", [this](QWidget* p) { return ReadoutCard::makeAudio(*ticker_, p); }},
            {"system", [this](QWidget* p) {
               return new SystemFactsCard(state_, {SystemPane::appearance, true}, p);
             }}};
  }

  /// A window of this width with one card that is as tall as it wants to be.
  std::unique_ptr<QWidget> windowWith(const Maker& make, int width) {
    auto window = std::make_unique<QWidget>();
    auto* column = new QVBoxLayout(window.get());
    column->addWidget(make(window.get()));
    column->addStretch();
    column->setContentsMargins(8, 8, 8, 8);
    window->resize(width, 100);
    window->show();
    runFor(ScriptCard::checkMs + 100);
    for (int i = 0; i < 3; ++i) {
      window->resize(width, column->totalHeightForWidth(window->width()));
      runFor(10);
    }
    return window;
  }

  static void expectRoom(const QWidget& window) {
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
      if (!widget->isVisible() || widget->parentWidget()->inherits("QAbstractScrollArea")) continue;
      const std::string who = std::string(widget->metaObject()->className()) + " " +
                              widget->accessibleName().toStdString() + widget->objectName().toStdString();
      if (!widget->parentWidget()->parentWidget() || !widget->parentWidget()->parentWidget()->inherits("QLineEdit")) {
        EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry())) << who;
      }
      if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
        EXPECT_GE(label->width(), label->minimumSizeHint().width()) << label->text().toStdString();
      } else if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
        EXPECT_GE(button->width(), button->minimumSizeHint().width()) << who;
        const int height =
            button->hasHeightForWidth() ? button->heightForWidth(button->width()) : button->minimumSizeHint().height();
        EXPECT_GE(button->height(), height) << who;
      }
    }
  }

  Readouts readouts_;
  CommandLineToolState view_, byHand_;
  ScriptDraft draft_;
  FakeLogin login_;
  LoginItem loginItem_{login_};
  FakeSystem system_;
  OneTimer timers_;
  SystemState state_{system_, timers_};
  QWidget host_;
  ReadoutTicker* ticker_ = new ReadoutTicker(&host_, [this] { return readouts_; });
  PreviewPainter painter_{[]() -> PreviewGpu { throw std::runtime_error("not here"); }};
  PresetPictures pictures_{painter_};
};

TEST_F(CardLayoutTest, fitANarrowWindowInLongWords) {
  host_.show();
  LongWords words;
  QApplication::installTranslator(&words);
  for (const auto& [name, make] : cards()) {
    SCOPED_TRACE(name);
    const auto window = windowWith(make, 400);
    EXPECT_LE(window->minimumSizeHint().width(), 400);
    EXPECT_EQ(window->width(), 400);
    expectRoom(*window);
  }
  QApplication::removeTranslator(&words);
}

TEST_F(CardLayoutTest, everyControlCanBeReachedByKeyAndHasAName) {
  host_.show();
  for (const auto& [name, make] : cards()) {
    SCOPED_TRACE(name);
    const auto window = windowWith(make, 500);
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
      const bool control =
          widget->inherits("QAbstractButton") || widget->inherits("QLineEdit") || widget->inherits("QPlainTextEdit");
      if (!control || !widget->isVisible() || widget->parentWidget()->inherits("QLineEdit")) continue;
      const auto* button = qobject_cast<const QAbstractButton*>(widget);
      EXPECT_TRUE(!widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()))
          << widget->metaObject()->className();
      EXPECT_NE(widget->focusPolicy() & Qt::ClickFocus, 0) << widget->objectName().toStdString();
    }
  }
}

}  // namespace
}  // namespace veloria::tests
