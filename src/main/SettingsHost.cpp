#include "main/SettingsHost.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <cmath>
#include <cstdio>
#include <utility>

#include "app/FirstMinute.h"
#include "render/ScreenGeometry.h"
#include "ui/cards/AgentCard.h"
#include "ui/cards/DriveModeChooser.h"
#include "ui/cards/EdgeCard.h"
#include "ui/cards/GlassCard.h"
#include "ui/cards/LoginItemCard.h"
#include "ui/cards/PaletteEditor.h"
#include "ui/cards/PaletteGallery.h"
#include "ui/cards/PanelCard.h"
#include "ui/cards/PresetGallery.h"
#include "ui/cards/ReadoutCard.h"
#include "ui/cards/Readouts.h"
#include "ui/preview/PresetPictures.h"
#include "ui/preview/PreviewPainter.h"
#include "ui/preview/PreviewStrip.h"
#include "ui/window/SettingsWindow.h"

namespace veloria {

namespace {

std::string figuresText(const ScreenStatus& screen) {
  char text[96];
  std::snprintf(text, sizeof text, "%.1f ms GPU · %d fps · %lldx%lld grid", screen.gpuMs, screen.fps,
                static_cast<long long>(screen.gridWidth), static_cast<long long>(screen.gridHeight));
  return text;
}

std::string audioText(const AudioStatus& audio) {
  if (audio.error) return "Can't listen to the sound output: " + *audio.error;
  if (!audio.running) return {};
  char text[96];
  const auto percent = [](double level) { return std::lround(100 * level); };
  std::snprintf(text, sizeof text, "Listening · level %ld%% · bass %ld%% · mid %ld%% · treble %ld%%",
                percent(audio.bands.level), percent(audio.bands.bass), percent(audio.bands.mid),
                percent(audio.bands.treble));
  return text;
}

std::string sentence(const char* start, const std::string& reason) {
  return reason.empty() ? std::string() : start + reason;
}

}  // namespace

Readouts readoutsOf(const AppStatus& status, const Screen* mainScreen) {
  Readouts readouts;
  readouts.darkness = sentence("Nothing is drawn: ", status.reason);
  readouts.hint = status.hint;
  for (const ScreenStatus& screen : status.screens) {
    if (status.rendering && mainScreen != nullptr && screen.name == mainScreen->name) {
      readouts.figures = figuresText(screen);
    }
  }
  readouts.cutout = ScreenGeometry::description(mainScreen);
  if (status.weather) {
    readouts.weather = status.weather->readout;
    readouts.weatherError = sentence("Couldn't get the weather: ", status.weather->error.value_or(""));
  }
  readouts.audio = audioText(status.audio);
  readouts.picture = sentence("Can't take colours from the desktop picture: ", status.pictureError.value_or(""));
  if (!status.capture.running) {
    readouts.capture = sentence("Panel text can't be kept readable: ", status.capture.error.value_or(""));
  }
  readouts.hdr = sentence("HDR glow has no effect: ", status.hdr);
  if (!status.pointer.available) readouts.pointer = sentence("Can't follow the pointer: ", status.pointer.reason);
  readouts.script = status.scriptError.value_or("");
  return readouts;
}

/// What draws the window's pictures; kept when the window is made anew.
struct SettingsHost::Previews {
  explicit Previews(PreviewGpuFactory makeGpu) : painter(std::move(makeGpu)), pictures(painter) {}
  PreviewPainter painter;
  PresetPictures pictures;
};

/// The window with everything that its cards need.
class SettingsHost::Window {
 public:
  Window(SettingsHost& host, SettingsWindow::Kind kind)
      : host_(host),
        previews_(*host.previews_),
        kind_(kind),
        window_(*host.ports_.settings, kind),
        ticker_(&window_, host.ports_.readouts) {
    window_.setWindowTitle(text("Veloria settings"));
    window_.setPreview(new PreviewStrip(previews_.painter, host.ports_.drivenConfig));
    addLook();
    addBarAndPointer();
    addDrive();
    addSystem();
    QObject::connect(&window_, &SettingsWindow::visibleChanged, [this](bool visible) {
      if (!visible && kind_ == SettingsWindow::Kind::popup) left_.start();
      if (host_.ports_.visibleChanged) host_.ports_.visibleChanged(visible);
    });
  }

  void show(const std::optional<Rect>& place) {
    if (place && !window_.isVisible()) moveTo(*place);
    window_.show();
    if (window_.isMinimized()) window_.showNormal();
    window_.raise();
    window_.activateWindow();
  }

  SettingsWindow::Kind kind() const { return kind_; }
  /// When a popover was closed last; invalid otherwise.
  const QElapsedTimer& leftSince() const { return left_; }
  SettingsWindow& widget() { return window_; }

 private:
  static QString text(const char* english) { return QCoreApplication::translate("SettingsHost", english); }

  void add(SettingTab tab, const char* title, const char* synonyms, std::function<QWidget*()> make,
           const char* afterGroup = nullptr) {
    window_.addCard({tab, afterGroup, text(title), text(synonyms), std::move(make)});
  }

  void addLook() {
    SettingsEditor& editor = *host_.ports_.settings;
    add(SettingTab::look, "Looks", "presets", [&, this] { return new PresetGallery(editor, previews_.pictures); });
    add(SettingTab::look, "Palette", "colours gradient wallpaper", [&, this] {
      auto* palettes = new PaletteGallery(editor);
      palettes->follow(ticker_);
      return palettes;
    });
    add(SettingTab::look, "Your own palette", "custom colours hex", [&] { return new PaletteEditor(editor); });
    add(
        SettingTab::look, "", "", [this] { return ReadoutCard::makeGlow(ticker_, &window_); }, "Glow");
    add(SettingTab::look, "Glass compensation", "clear tinted", [&] { return new GlassCard(editor); });
  }

  /// A first start may have put the band elsewhere, because the panel hid it.
  void goBehindThePanel() {
    host_.ports_.settings->change("the band behind the panel", [](NimbraConfig& config) {
      config = withOffer(LightOffer::clearPanel, config, true);
    });
  }

  void addBarAndPointer() {
    if (PanelClearing* panel = host_.ports_.panel) {
      add(SettingTab::bar, "Let the light through the panel", "clear transparent opaque taskbar",
          [this, panel] { return new PanelCard(*panel, [this] { goBehindThePanel(); }); });
    }
#ifndef __APPLE__
    add(
        SettingTab::bar, "Edge of the screen", "panel top bottom position place",
        [this] { return new EdgeCard(*host_.ports_.settings); }, "Place");
#endif
    add(
        SettingTab::bar, "", "", [this] { return ReadoutCard::makeNotch(ticker_, &window_); }, "Camera housing");
    add(SettingTab::pointer, "", "", [this] { return ReadoutCard::makePointer(ticker_, &window_); });
  }

  void addDrive() {
    SettingsEditor& editor = *host_.ports_.settings;
    add(SettingTab::drive, "What drives the band", "mode visualizer music agent weather wind script",
        [&] { return new DriveModeChooser(editor); });
    add(SettingTab::drive, "Sound", "audio music", [this] { return ReadoutCard::makeAudio(ticker_, &window_); });
    add(SettingTab::drive, "Weather now", "temperature wind",
        [this] { return ReadoutCard::makeWeather(ticker_, &window_); });
    add(SettingTab::drive, "Agents and shells", "coding agents nimbra state file", [] { return new AgentCard; });
    add(SettingTab::drive, "Your script", "scene language editor",
        [&, this] { return new ScriptCard(editor, host_.draft_); });
  }

  void addSystem() {
    Ports& ports = host_.ports_;
    add(SettingTab::system, "Status", "fps gpu dark why paused",
        [this] { return ReadoutCard::makeStatus(ticker_, &window_); });
    add(SettingTab::system, "Start", "login autostart", [&] { return new LoginItemCard(*ports.loginItem); });
    add(SettingTab::system, "The nimbra command", "command line shell path",
        [&] { return new CommandLineCard(ports.commandLine, packageCommand); });
    add(SettingTab::system, "System settings that affect the band", "transparency contrast tint bar desktop picture",
        [&] { return new SystemFactsCard(*ports.system, ports.panes); });
  }

  /// Below or above the place, wholly on its screen.
  void moveTo(const Rect& place) {
    const QRect icon(QPoint(qRound(place.x), qRound(place.y)), QSize(qRound(place.width), qRound(place.height)));
    const QScreen* screen = QGuiApplication::screenAt(icon.center());
    if (screen == nullptr) return;
    const QRect room = screen->availableGeometry();
    const QSize size = window_.size();
    const int x =
        qBound(room.left(), icon.center().x() - size.width() / 2, qMax(room.left(), room.right() - size.width()));
    const bool below = icon.bottom() + size.height() <= room.bottom();
    const int y = below ? qMax(icon.bottom() + 1, room.top()) : qMax(room.top(), icon.top() - size.height());
    window_.move(x, y);
  }

  SettingsHost& host_;
  Previews& previews_;
  SettingsWindow::Kind kind_;
  QElapsedTimer left_;
  SettingsWindow window_;
  ReadoutTicker ticker_;
};

SettingsHost::SettingsHost(Ports ports) : ports_(std::move(ports)) {}

SettingsHost::~SettingsHost() = default;

/// By the icon it is a popover, elsewhere a window like any other.
SettingsHost::Window& SettingsHost::window(bool byIcon) {
  const auto kind = byIcon ? SettingsWindow::Kind::popup : SettingsWindow::Kind::ordinary;
  if (!previews_) previews_ = std::make_unique<Previews>(ports_.makeGpu);
  if (!window_ || (window_->kind() != kind && !window_->widget().isVisible()))
    window_ = std::make_unique<Window>(*this, kind);
  return *window_;
}

void SettingsHost::show(const std::optional<Rect>& place) {
  window(place.has_value()).show(place);
}

void SettingsHost::close() {
  if (window_) window_->widget().close();
}

QWidget& SettingsHost::embeddable() {
  return window(false).widget();
}

/// A click on the icon takes the focus from a popover, which closes by itself before the click is told.
bool SettingsHost::isShown() const {
  constexpr int clickMs = 250;
  return window_ && (window_->widget().isVisible() ||
                     (window_->leftSince().isValid() && !window_->leftSince().hasExpired(clickMs)));
}

}  // namespace veloria
