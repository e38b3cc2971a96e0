#pragma once

#include <functional>
#include <optional>
#include <string>

namespace veloria {

/// What the settings window shows about the running program: sentences, empty if there is nothing to say.
struct Readouts {
  std::string darkness;  ///< why nothing is drawn; empty while the band is lit
  std::string hint;      ///< why the band, though drawn, can't be seen
  std::string figures;   ///< GPU time, frame rate and grid
  std::string cutout;    ///< the camera housing of the main screen
  std::string weather;   ///< the last readings
  std::string weatherError;
  std::string audio;    ///< the levels of the sound, or why there are none
  std::string picture;  ///< why the wallpaper gives no colours, while they are wanted
  std::string capture;  ///< why the bar's text is not kept; empty while it is or need not be
  std::string pointer;  ///< why the pointer is not followed; empty if it is
  std::string script;   ///< the running script's error
};

/// Called on the main thread, a few times a second while the window is open.
using ReadoutSource = std::function<Readouts()>;

}  // namespace veloria
