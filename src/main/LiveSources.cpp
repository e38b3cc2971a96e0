#include "main/LiveSources.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <filesystem>
#include <memory>
#include <utility>

#include "main/Command.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/qt/http/WeatherAddress.h"
#include "platform/linux/pulse/PulseAudioTap.h"
#include "render/WallpaperPalette.h"

namespace veloria {

namespace {

/// Its folder is made so that others find where to write. Empty without a home.
std::filesystem::path stateFile(const Environment& environment) {
  const auto folder = dataFolder(environment);
  if (!folder || !makeUserFolder(*folder)) return {};
  return *folder / "state.json";
}

std::string weatherUrl(const Environment& environment) {
  auto url = weatherBaseUrl(environment("NIMBRA_WEATHER_URL"));
  if (!url) throw UsageError(url.error());
  return *std::move(url);
}

void postToMain(std::function<void()> action) {
  if (auto* application = QCoreApplication::instance()) {
    QMetaObject::invokeMethod(application, std::move(action), Qt::QueuedConnection);
  }
}

}  // namespace

LiveSources::LiveSources(const Environment& environment, ScreenProvider& screens)
    : environment_(environment),
      screens_(screens),
      weatherUrl_(weatherUrl(environment)),
      picture_(environment, postToMain) {}

void LiveSources::addTo(SceneDriver::Ports& ports) {
  ports.agentStateFile = stateFile(environment_);
  ports.makeAudioSource = [] { return std::make_unique<AudioSource>(std::make_unique<PulseAudioTap>()); };
  ports.weather.http = &http_;
  ports.weather.baseUrl = weatherUrl_;
  ports.sampleWallpaper = [this](const auto& done) { sampleWallpaper(done); };
}

void LiveSources::sampleWallpaper(const std::function<void(std::optional<Palette>)>& done) {
  const auto screens = screens_.screens();
  if (screens.empty()) return;
  picture_.thumbnail(screens.front(), [done](const std::optional<DesktopPicture::Pixels>& pixels) {
    done(pixels ? wallpaperPalette(*pixels) : std::nullopt);
  });
}

}  // namespace veloria
