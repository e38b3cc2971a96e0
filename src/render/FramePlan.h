#pragma once

#include <cstdint>

#include "gpu/Types.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Decisions about sizes and time that need nothing but numbers.

/// Cells of the fluid's grid.
struct GridSize {
  std::int64_t width = 0;
  std::int64_t height = 0;
  bool operator==(const GridSize&) const = default;
};

/// The grid for a drawable of `drawable` pixels (both above 0). A strip (height below a fifth of the width) gets 0.33
/// cells a pixel along it, `verticalStretch` times as many rows as its shape asks for and at most 384; a tall surface
/// 0.21 cells a pixel and at most 1152 rows. Width 128 to 2048; never more rows than pixels, but at least 24.
GridSize gridSizeFor(gpu::Size drawable, double quality, double verticalStretch);

/// The scene's size relative to the drawable's: 1 for a strip, 0.3 to 1 (0.55 x quality) for a tall surface.
double sceneScaleFor(gpu::Size drawable, double quality);

/// `drawable` x `scale`, at least 1 in each direction.
gpu::Size sceneSizeFor(gpu::Size drawable, double scale);

/// A quarter of the scene, at least 1 in each direction.
gpu::Size glowSizeFor(gpu::Size scene);

/// Seconds that a frame moves the picture on: since the frame before, held to 1/240 to 0.05; 1/60 for the first one
/// (`lastStamp` 0).
double frameSeconds(double now, double lastStamp);

/// Pressure iterations that are run: at least 1, at most 200.
std::int64_t pressureIterationsFor(std::int64_t wanted);

/// Octaves that are drawn: at most 8.
std::int64_t octavesFor(std::int64_t wanted);

/// Frames a second to draw at: 1 to 240; 60 for 0 and below.
double frameRateFor(std::int64_t wanted);

}  // namespace veloria
