#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Geometry.h"
#include "base/MediaClock.h"
#include "ports/PointerSource.h"

namespace veloria {

/// Reads Hyprland's answer to "j/cursorpos", an object with the numbers "x" and "y": the pointer in the layout's
/// coordinates (logical pixels, y growing downwards). Nothing for any other bytes and for numbers beyond a million.
std::optional<Point> cursorPositionFromAnswer(std::string_view answer);

/// The socket on which the running Hyprland takes requests: .socket.sock in the instance's folder, which is
/// `hypr/<signature>` in $XDG_RUNTIME_DIR, or in /tmp for versions before 0.40. Nothing unless
/// HYPRLAND_INSTANCE_SIGNATURE names an instance.
std::optional<std::filesystem::path> hyprlandRequestSocket(const Environment& environment);

/// Asks Hyprland for the pointer's position. It never waits: each call reads what has come in since the last one and
/// asks again, so a position is as old as the pause between two calls. Main thread.
///
/// Hyprland closes the connection after its answer; this was tested with a server that follows its documentation,
/// not with Hyprland itself.
class HyprlandPointer {
 public:
  /// An answer that takes longer counts as none.
  static constexpr double patienceSeconds = 0.5;

  explicit HyprlandPointer(std::filesystem::path requestSocket, MediaClock clock = mediaTime);
  ~HyprlandPointer();
  HyprlandPointer(const HyprlandPointer&) = delete;
  HyprlandPointer& operator=(const HyprlandPointer&) = delete;

  /// The newest position in the layout's coordinates (logical pixels, y growing downwards); absent before the first
  /// answer and while Hyprland doesn't give any.
  std::optional<Point> layoutPosition();

 private:
  struct Question;

  void ask();
  void readAnswer();

  std::filesystem::path requestSocket_;
  MediaClock clock_;
  std::unique_ptr<Question> question_;
  std::optional<Point> position_;
};

/// The pointer of the Hyprland that listens at `requestSocket`. `toGlobal` turns the layout's coordinates into global
/// points (y up from the bottom left corner of the first screen).
PointerSource hyprlandPointerSource(const std::filesystem::path& requestSocket, std::function<Point(Point)> toGlobal);

}  // namespace veloria
