#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/linux/screens/ScreenDescription.h"

namespace veloria {

/// What a compositor has said about one output. Nothing here is checked yet.
struct OutputFacts {
  std::string name;
  int modeWidth = 0;  ///< pixels, before the output is turned; 0 when not told
  int modeHeight = 0;
  bool turned = false;  ///< by a quarter, so that width and height change places
  int scale = 1;        ///< wl_output's: a whole number, the next above a fractional scale
  int x = 0;            ///< compositor's coordinates, y downwards
  int y = 0;
  std::optional<Extent> logicalSize;  ///< points; only xdg-output tells
  bool operator==(const OutputFacts&) const = default;
};

/// The output in points, y downwards; nothing for one that can't be a screen (no size, beyond 65535 points or the
/// coordinate range).
std::optional<MonitorDescription> monitorOf(const OutputFacts& facts);

/// Pixels per point, 0.5 to 8. With `fractional` what the mode's size and the logical size say, to the 120th that
/// compositors count in; else, and where they don't say it, the whole number of wl_output.
double pixelsPerPoint(const OutputFacts& facts, bool fractional);

}  // namespace veloria
