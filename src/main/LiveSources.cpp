#include "main/LiveSources.h"

#include <filesystem>
#include <memory>
#include <utility>

#include "agent/StateMembers.h"
#include "main/commands/Command.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/qt/http/WebAddress.h"
#include "render/WallpaperPalette.h"

namespace veloria {

namespace {

/// Makes its folder, so that other programs can write into it; they may still make it later if that fails. Empty
/// without a home.
std::filesystem::path stateFile(const Environment& environment) {
  const auto folder = dataFolder(environment);
  if (!folder) return {};
  makeUserFolder(*folder);
  return *folder / stateFileName;
}

std::string weatherUrl(const Environment& environment) {
  auto url = weatherBaseUrl(environment("NIMBRA_WEATHER_URL"));
  if (!url) throw UsageError(url.error());
  return *std::move(url);
}

}  // namespace

LiveSources::LiveSources(const Environment& environment, Ports ports)
    : environment_(environment), ports_(std::move(ports)), weatherUrl_(weatherUrl(environment)) {}

void LiveSources::addTo(SceneDriver::Ports& ports) {
  ports.agentStateFile = stateFile(environment_);
  ports.makeAudioSource = [make = ports_.makeAudioTap] { return std::make_unique<AudioSource>(make()); };
  ports.weather.http = &http_;
  ports.weather.baseUrl = weatherUrl_;
  ports.sampleWallpaper = [this](const auto& done) { sampleWallpaper(done); };
}

void LiveSources::sampleWallpaper(const std::function<void(std::optional<Palette>)>& done) {
  const auto screens = ports_.screens->screens();
  if (screens.empty()) return;
  ports_.picture->thumbnail(screens.front(), [this, done](const Result<DesktopPicture::Pixels>& pixels) {
    auto palette = pixels ? wallpaperPalette(*pixels) : std::nullopt;
    pictureError_.reset();
    if (!palette) pictureError_ = pixels ? "it has fewer than two hues" : pixels.error();
    done(std::move(palette));
  });
}

}  // namespace veloria
