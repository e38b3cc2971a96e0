// Makes a picture of the program on a whole desktop: a window manager, a panel, a compositor and two windows.
// usage: desktop_picture OUTPUT.png

#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "desktop/DesktopSession.h"
#include "settings/LookPreset.h"
#include "settings/SettingsCodec.h"

namespace veloria::tests {
namespace {

constexpr int width = 1920;
constexpr int height = 1080;
constexpr int shownHeight = 480;

/// A ridge of hills that ends at the lower edge.
QPolygonF ridge(double base, double swing, double pace, double phase) {
  QPolygonF line;
  for (int x = 0; x <= width; x += 4) {
    const double at = x * pace + phase;
    line << QPointF(x, base - swing * (std::sin(at) + 0.5 * std::sin(2.3 * at) + 0.2 * std::sin(5.1 * at)));
  }
  line << QPointF(width, height) << QPointF(0, height);
  return line;
}

void drawStars(QPainter& painter) {
  std::mt19937 random(7);
  for (int star = 0; star < 260; ++star) {
    const auto x = static_cast<int>(random() % width);
    const auto y = static_cast<int>(random() % 300);
    painter.fillRect(x, y, 1, 1, QColor(220, 225, 255, 40 + static_cast<int>(random() % 110)));
  }
}

/// A clear night over hills.
QImage background() {
  QImage picture(width, height, QImage::Format_RGB32);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  QLinearGradient sky(0, 0, 0, shownHeight);
  sky.setColorAt(0, QColor(6, 9, 20));
  sky.setColorAt(1, QColor(24, 32, 58));
  painter.fillRect(picture.rect(), sky);
  drawStars(painter);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(17, 23, 42));
  painter.drawPolygon(ridge(380, 26, 0.0042, 1.2));
  painter.setBrush(QColor(10, 14, 27));
  painter.drawPolygon(ridge(432, 22, 0.0061, 4.0));
  return picture;
}

std::string settings() {
  NimbraConfig config = choose(NimbraConfig(), *LookPreset::find("Northern Lights"));
  config.layerMode = LayerMode::aboveMenuBar;
  config.extraHeight = 110;
  config.exposure = 1.2;
  config.fadeBottom = 0.75;
  config.framesPerSecond = 30;
  config.opaqueBackground = false;
  config.additive = 1;  // the panel's text stays readable through the light
  return encodeSettings(config).value();
}

void prepare(DesktopSession& desktop) {
  const std::string wallpaper = desktop.folder() / "wallpaper.png";
  if (!background().save(QString::fromStdString(wallpaper))) throw std::runtime_error("no wallpaper");
  desktop.runToEnd({"hsetroot", "-fill", wallpaper});
  const auto folder = std::filesystem::path(desktop.environment().at("XDG_CONFIG_HOME")) / "Veloria";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "NimbraConfig.v1.json") << settings();
}

std::unique_ptr<ChildProcess> terminal(DesktopSession& desktop, const std::string& title, const std::string& geometry,
                                       const std::string& command) {
  std::istringstream words("xterm -fs 10 -bg #10131b -fg #c8cede +sb -b 10 -geometry " + geometry);
  std::vector<std::string> argv{std::istream_iterator<std::string>(words), {}};
  argv.insert(argv.end(), {"-fa", "DejaVu Sans Mono", "-T", title, "-e", "sh", "-c", command + "; exec sleep 3600"});
  auto process = desktop.run(argv);
  if (!desktop.waitForWindow(title, 20)) throw std::runtime_error(title + " shows no window:\n" + process->output());
  return process;
}

QImage pictureOf(const Screenshot& screen) {
  QImage picture(screen.width, shownHeight, QImage::Format_RGB32);
  for (int y = 0; y < shownHeight; ++y) {
    for (int x = 0; x < screen.width; ++x) {
      const Pixel p = screen.at(x, y);
      picture.setPixel(x, y, qRgb(p.red, p.green, p.blue));
    }
  }
  return picture;
}

void makePicture(const std::string& output) {
  if (const auto missing = DesktopSession::missing({"openbox", "tint2", "picom", "hsetroot", "xterm"});
      !missing.empty()) {
    throw std::runtime_error(missing);
  }
  DesktopSession desktop({.width = width, .height = height, .serverArguments = {}});
  prepare(desktop);
  const auto manager =
      desktop.run({"openbox", "--sm-disable", "--config-file", VELORIA_PICTURE_DATA "/picture.openbox.xml"});
  if (!desktop.waitUntil([&] { return !desktop.property(desktop.root(), "_NET_SUPPORTING_WM_CHECK").empty(); }, 20)) {
    throw std::runtime_error("no window manager:\n" + manager->output());
  }
  const auto panel = desktop.run({"tint2", "-c", VELORIA_PICTURE_DATA "/picture.tint2rc"});
  if (!desktop.waitForWindow("Tint2", 20)) throw std::runtime_error("no panel:\n" + panel->output());
  desktop.startCompositor();
  const std::string veloria = VELORIA_BINARY;
  const auto left = terminal(desktop, "veloria", "100x40+120+196", veloria + " --help");
  const auto right = terminal(desktop, "veloria render", "84x40+1080+230", veloria + " render --help");
  const auto band = desktop.run({veloria});
  if (!desktop.waitForWindow("Veloria", 30)) throw std::runtime_error("no band:\n" + band->output());
  desktop.waitUntil([] { return false; }, 8);
  if (!pictureOf(desktop.screenshot()).save(QString::fromStdString(output))) throw std::runtime_error("no " + output);
}

}  // namespace
}  // namespace veloria::tests

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: desktop_picture OUTPUT.png\n", stderr);
    return 2;
  }
  try {
    veloria::tests::makePicture(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "desktop_picture: %s\n", error.what());
    return 1;
  }
}
