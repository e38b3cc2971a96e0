#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/Environment.h"
#include "platform/qt/http/QtHttpFetcher.h"
#include "ports/AudioTap.h"
#include "ports/DesktopPicture.h"
#include "ports/ScreenProvider.h"
#include "scene/SceneDriver.h"

namespace veloria {

/// What drives the band on a real desktop: sound, the weather, the agent state file and the desktop's picture. Main
/// thread; outlives the driver.
class LiveSources {
 public:
  /// The system's side of it; what the pointers point to must outlive this.
  struct Ports {
    ScreenProvider* screens = nullptr;
    DesktopPicture* picture = nullptr;
    std::function<std::unique_ptr<AudioTap>()> makeAudioTap;
  };

  /// Throws UsageError when NIMBRA_WEATHER_URL is not an allowed address.
  LiveSources(const Environment& environment, Ports ports);

  /// Fills in what belongs to the sources.
  void addTo(SceneDriver::Ports& ports);

  /// Why the desktop's picture gave no colours the last time it was read; nothing if it gave some.
  const std::optional<std::string>& pictureError() const { return pictureError_; }

 private:
  void sampleWallpaper(const std::function<void(std::optional<Palette>)>& done);

  Environment environment_;
  Ports ports_;
  std::string weatherUrl_;
  std::optional<std::string> pictureError_;
  QtHttpFetcher http_;
};

}  // namespace veloria
