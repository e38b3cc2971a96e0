#pragma once

#include <optional>

#include "base/Geometry.h"
#include "gpu/Types.h"
#include "render/RenderParams.h"
#include "render/SimParams.h"
#include "render/StripGeometry.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Filling the uniform blocks: numbers in, numbers out. Settings that are not finite arrive as 0.

/// The pointer as the renderer knows it.
struct PointerState {
  std::optional<Point> local;  ///< points from the view's top left corner, y down; absent when it is elsewhere
  Point velocity;              ///< points per 60 Hz frame in screen coordinates, y up
  bool inside = false;
};

/// The view's size in points: the drawable's over the backing scale; half of it when no geometry is known. At least 1.
Extent viewSizeFor(gpu::Size drawable, const std::optional<StripGeometry>& geometry);

/// The fluid's block, but for the grid's size. `dtFrames` is scaled time in 60 Hz frames, `simTime` in seconds. The
/// config's palette must have four stops (std::logic_error otherwise).
SimParams makeSimParams(const NimbraConfig& config, double dtFrames, double simTime, const PointerState& pointer,
                        Extent viewSize);

/// The band's and composite's block, with the text mask off. `scene` is the drawable's size x the scene's scale,
/// `debugSolid` the value of NIMBRA_DEBUG_SOLID.
RenderParams makeRenderParams(const NimbraConfig& config, double simTime, Extent scene,
                              const std::optional<StripGeometry>& geometry, const PointerState& pointer,
                              float debugSolid);

/// The number that `text` is, as a float; 0 when it is absent, no number, or not finite.
float debugSolidValue(const char* text);

}  // namespace veloria
