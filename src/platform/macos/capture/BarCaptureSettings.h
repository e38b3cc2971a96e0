#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "gpu/Types.h"
#include "ports/BarCaptureStream.h"

namespace veloria {

/// How the menu bar is captured. The pictures have 32 bits a pixel (blue first) and are sRGB encoded.
struct BarCaptureSettings {
  static constexpr const char* queueLabel = "com.tollmere.Veloria.capture";
  static constexpr int framesPerSecond = 30;  ///< at most
  static constexpr int queueDepth = 3;        ///< pictures that the system keeps; we may hold two of them
  static constexpr bool showsCursor = false;
  static constexpr bool scalesToFit = false;

  Rect sourceRect;     ///< points from the display's top left corner, y growing downwards
  gpu::Size pictures;  ///< whole pixels, rounded down
};

/// Nothing if the region has no whole pixel, or more than a texture can hold.
std::optional<BarCaptureSettings> barCaptureSettings(const BarRegion& region);

inline constexpr const char* noDisplayToCapture = "No capturable display found.";

/// Which of `displays` to capture: the wanted one, else the first. Nothing when there are none.
std::optional<std::size_t> displayToCapture(std::span<const std::uint32_t> displays, std::uint32_t wanted);

/// Our own content, which the pictures leave out.
struct OwnContent {
  std::optional<std::size_t> application;  ///< index of ours; nothing if the system does not list it
  std::vector<std::size_t> windows;        ///< if not listed, the indices of our windows
};

/// `applications`: the process of each application that can be captured. `windowOwners`: that of each window, 0 for
/// none. `own`: this process.
OwnContent ownContent(std::span<const int> applications, std::span<const int> windowOwners, int own);

}  // namespace veloria
