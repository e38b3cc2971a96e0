#pragma once

#include "base/Environment.h"
#include "platform/qt/http/QtHttpFetcher.h"
#include "platform/linux/wallpaper/LinuxDesktopPicture.h"
#include "render/ScreenProvider.h"
#include "scene/SceneDriver.h"

namespace veloria {

/// What drives the band on a real desktop: sound, the weather, the agent state file and the desktop's picture. Main
/// thread; outlives the driver.
class LiveSources {
 public:
  /// Throws UsageError when NIMBRA_WEATHER_URL is no address that may be asked. `screens` outlives this.
  LiveSources(const Environment& environment, ScreenProvider& screens);

  /// Fills in what belongs to the sources.
  void addTo(SceneDriver::Ports& ports);

 private:
  void sampleWallpaper(const std::function<void(std::optional<Palette>)>& done);

  Environment environment_;
  ScreenProvider& screens_;
  std::string weatherUrl_;
  QtHttpFetcher http_;
  LinuxDesktopPicture picture_;
};

}  // namespace veloria
