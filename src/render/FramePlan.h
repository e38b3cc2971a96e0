#pragma once

#include <cstdint>

#include "gpu/Types.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Decisions about sizes and times: pure functions of numbers.

/// Cells of the fluid's grid.
struct GridSize {
  std::int64_t width = 0;
  std::int64_t height = 0;
  bool operator==(const GridSize&) const = default;
};

/// The grid for a drawable of `drawable` pixels (both above 0). Columns: `quality` (1: normal) times 0.33 per pixel for
/// a strip (height below a fifth of the width), 0.21 for a tall surface; 128 to 2048. Rows: as the shape asks for,
/// times `verticalStretch` for a strip; at most 384 for a strip and 1152 for a tall surface, never more than pixels, at
/// least 24.
GridSize gridSizeFor(gpu::Size drawable, double quality, double verticalStretch);

/// The scene's size relative to the drawable's: 1 for a strip, 0.3 to 1 (0.55 x quality) for a tall surface.
double sceneScaleFor(gpu::Size drawable, double quality);

/// `drawable` x `scale`, at least 1 in each direction.
gpu::Size sceneSizeFor(gpu::Size drawable, double scale);

/// A quarter of the scene, at least 1 in each direction.
gpu::Size glowSizeFor(gpu::Size scene);

/// The time that a frame advances the picture by, in seconds: since the frame before, clamped to 1/240 to 0.05; 1/60
/// for the first frame (`lastStamp` 0).
double frameSeconds(double now, double lastStamp);

/// Pressure iterations to run: 1 to 200.
std::int64_t pressureIterationsFor(std::int64_t wanted);

/// Octaves to draw: at most 8.
std::int64_t octavesFor(std::int64_t wanted);

/// Frames per second to draw: 1 to 240; 60 for 0 and below.
double frameRateFor(std::int64_t wanted);

}  // namespace veloria
