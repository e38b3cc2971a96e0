// Saves a picture of each tab of the settings window, light and dark: settings_pictures FOLDER [FONTSCALE]. It needs no
// display. QT_SCALE_FACTOR=2 in the environment makes pictures of twice the size.

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <algorithm>
#include <cstdio>

#include "../support/MemoryStorage.h"
#include "ui/window/SettingsWindow.h"

namespace {

using namespace veloria;

/// The colours of a dark desktop.
QPalette darkPalette() {
  const QColor window(46, 46, 50), base(34, 34, 37), ink(236, 236, 238), faint(130, 130, 135);
  QPalette palette(ink, QColor(62, 62, 67), QColor(90, 90, 96), QColor(28, 28, 30), QColor(76, 76, 82), ink, ink, base,
                   window);
  palette.setColor(QPalette::Highlight, QColor(64, 128, 222));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::PlaceholderText, faint);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, faint);
  }
  return palette;
}

bool save(QWidget& window, const QString& file) {
  QCoreApplication::processEvents();
  QCoreApplication::processEvents();
  return window.grab().save(file);
}

bool savePictures(SettingsEditor& editor, const QString& folder, const QString& mood) {
  SettingsWindow window(editor);
  window.show();
  bool saved = true;
  const double ratio = window.devicePixelRatio();
  const QString end = ratio > 1 ? QStringLiteral("@%1x.png").arg(ratio) : QStringLiteral(".png");
  for (int i = 0; i < settingTabCount; ++i) {
    const auto tab = static_cast<SettingTab>(i);
    window.showTab(tab);
    const QString name = folder + '/' + QString(SettingCatalogue::tabTitle(tab)).toLower() + '-' + mood;
    saved = save(window, name + end) && saved;
    window.resize(400, 1400);
    saved = save(window, name + "-long" + end) && saved;
    window.resize(400, 520);
  }
  for (const char* words : {"glow", "xyzzy"}) {
    window.search(words);
    saved = save(window, folder + "/search-" + words + "-" + mood + end) && saved;
  }
  return saved;
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
  QFont font = QApplication::font();
  font.setPointSizeF(font.pointSizeF() * (argc == 3 ? std::max(QByteArray(argv[2]).toDouble(), 0.5) : 1));
  QApplication::setFont(font);
  const QString folder = QString::fromLocal8Bit(argv[1]);
  QDir().mkpath(folder);
  SettingsStore store(std::make_unique<tests::MemoryStorage>(), tests::emptyEnvironment);
  SettingsEditor editor(store);
  editor.change("look", [](NimbraConfig& config) { config.exposure = 2; });
  bool saved = savePictures(editor, folder, QStringLiteral("light"));
  QApplication::setPalette(darkPalette());
  saved = savePictures(editor, folder, QStringLiteral("dark")) && saved;
  if (!saved) std::fprintf(stderr, "cannot write into %s\n", argv[1]);
  return saved ? 0 : 1;
}
