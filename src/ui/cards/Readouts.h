#pragma once

#include <functional>
#include <optional>
#include <string>

namespace veloria {

/// What the running program tells about itself in the settings window: sentences for people, empty where there is
/// nothing to tell.
struct Readouts {
  std::string darkness;  ///< why nothing is drawn; empty while the band is lit
  std::string hint;      ///< why the band, though drawn, can't be seen
  std::string figures;   ///< GPU time, frame rate and grid
  std::string cutout;    ///< the camera housing of the main screen
  std::string weather;   ///< the last readings
  std::string weatherError;
  std::string audio;    ///< what is listened to and how loud it is, or why not
  std::string picture;  ///< why the desktop's picture gives no colours, while they are wanted
  std::string capture;  ///< why the bar's text is not kept; empty while it is or need not be
  std::string pointer;  ///< why the pointer is not followed; empty where it is
  std::string script;   ///< the running script's error
};

/// Asked on the main thread, a few times a second while the window is open and never while it is closed.
using ReadoutSource = std::function<Readouts()>;

}  // namespace veloria
