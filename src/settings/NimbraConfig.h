#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/Range.h"
#include "settings/Modes.h"
#include "settings/Palette.h"

namespace veloria {

/// Every user setting: what is shown, where, how it looks and what drives it. A plain value: copied, compared, replaced
/// as a whole. It holds whatever was stored; values out of range are capped where they are used.
///
/// Units: heights and paddings are points; fades, emit positions and the pointer radius are shares of the band (0 to
/// 1); dissipations are the share kept per 60 Hz frame; latitudes and longitudes are decimal degrees, north and east
/// positive.
struct NimbraConfig {
#define VELORIA_FIELD(type, name, initial, group) type name = initial;
#include "settings/NimbraConfigFields.h"

  bool operator==(const NimbraConfig&) const = default;

  /// The palette to draw with: `customPalette` when present, else the built-in palette called `paletteName`, else the
  /// first built-in one.
  const Palette& palette() const;

  /// A copy with every look and fluid field at its default and all else kept.
  NimbraConfig resettingLook() const;

  /// A copy with `tempo` folded into the speed-like fields. `tempo` itself is kept.
  NimbraConfig applyingTempo() const;
};

/// What the settings window offers for each number, by the field's name.
namespace ranges {
#define VELORIA_NUMBER(type, name, initial, group, low, high) inline constexpr Range name{low, high};
#include "settings/NimbraConfigFields.h"
}  // namespace ranges

}  // namespace veloria
