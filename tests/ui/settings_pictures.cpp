// Saves a picture of each tab of the settings window, light and dark: settings_pictures FOLDER [FONTSCALE]. It needs no
// display. QT_SCALE_FACTOR=2 in the environment makes pictures of twice the size. Prints how long opening the window
// takes.

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QScrollBar>
#include <algorithm>
#include <cstdio>

#include "Palettes.h"
#include "SettingsFixture.h"
#include "ui/window/SettingsWindow.h"

namespace {

using namespace veloria;

bool save(QWidget& window, const QString& file) {
  QCoreApplication::processEvents();
  QCoreApplication::processEvents();
  return window.grab().save(file);
}

bool savePictures(SettingsEditor& editor, const QString& folder, const QString& mood) {
  SettingsWindow window(editor);
  window.show();
  bool saved = true;
  const QString scale =
      window.devicePixelRatio() > 1 ? QStringLiteral("@%1x").arg(window.devicePixelRatio()) : QString();
  for (int i = 0; i < settingTabCount; ++i) {
    const auto tab = static_cast<SettingTab>(i);
    window.showTab(tab);
    const QString name = QStringLiteral("%1/%2-%3").arg(folder, SettingCatalogue::tabTitle(tab), mood).toLower();
    saved = save(window, name + scale + ".png") && saved;
    window.resize(400, 1400);
    saved = save(window, name + "-long" + scale + ".png") && saved;
    window.resize(400, 520);
  }
  window.search(QStringLiteral("glow"));
  saved = save(window, folder + "/search-" + mood + scale + ".png") && saved;
  window.search(QStringLiteral("xyzzy"));
  return save(window, folder + "/nothing-" + mood + scale + ".png") && saved;
}

void printOpeningTimes(SettingsEditor& editor) {
  for (const char* which : {"first", "second"}) {
    QElapsedTimer timer;
    timer.start();
    SettingsWindow window(editor);
    window.show();
    QCoreApplication::processEvents();
    window.grab();
    std::printf("%s window: %lld ms\n", which, static_cast<long long>(timer.elapsed()));
    timer.restart();
    window.hide();
    window.show();
    QCoreApplication::processEvents();
    window.grab();
    std::printf("opened again: %lld ms\n", static_cast<long long>(timer.elapsed()));
    for (int i = 1; i < settingTabCount; ++i) {
      timer.restart();
      window.showTab(static_cast<SettingTab>(i));
      QCoreApplication::processEvents();
      std::printf("  tab %d: %lld ms\n", i, static_cast<long long>(timer.elapsed()));
    }
    timer.restart();
    window.search(QStringLiteral("e"));
    QCoreApplication::processEvents();
    std::printf("  all found: %lld ms\n", static_cast<long long>(timer.elapsed()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fputs("usage: settings_pictures FOLDER [FONTSCALE]\n", stderr);
    return 2;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  if (argc == 3) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * std::max(QByteArray(argv[2]).toDouble(), 0.5));
    QApplication::setFont(font);
  }
  const QString folder = QString::fromLocal8Bit(argv[1]);
  QDir().mkpath(folder);
  NimbraConfig config;
  config.exposure = 2;
  config.pointerMode = PointerMode::glow;
  EditedSettings settings(config);
  settings.editor.change("glowAmount", [](NimbraConfig& edited) { edited.glowAmount = 1.4; });
  printOpeningTimes(settings.editor);
  bool saved = savePictures(settings.editor, folder, QStringLiteral("light"));
  QApplication::setPalette(darkPalette());
  saved = savePictures(settings.editor, folder, QStringLiteral("dark")) && saved;
  if (!saved) std::fprintf(stderr, "cannot write into %s\n", argv[1]);
  return saved ? 0 : 1;
}
