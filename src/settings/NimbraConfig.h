#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Range.h"
#include "settings/Palette.h"

namespace veloria {

/// The modes in the settings record, in the order in which they are offered. Each is stored as its raw value. Look-up
/// is case-sensitive; an unknown raw value gives nothing.

enum class Visualizer { autonomous, music, agent, weather, wind, script };
enum class LayerMode { desktopStrip, aboveMenuBar, desktopFull };
enum class NotchMode { mask, halo, ignore };
enum class PointerMode { none, glow, push, vortex, calm };

/// The raw values of E, in order; the index is the enumerator's value.
template <typename E>
inline constexpr std::array<std::string_view, 0> rawValues{};
template <>
inline constexpr std::array<std::string_view, 6> rawValues<Visualizer>{"autonomous", "music", "agent",
                                                                       "weather",    "wind",  "script"};
template <>
inline constexpr std::array<std::string_view, 3> rawValues<LayerMode>{"desktopStrip", "aboveMenuBar", "desktopFull"};
template <>
inline constexpr std::array<std::string_view, 3> rawValues<NotchMode>{"mask", "halo", "ignore"};
template <>
inline constexpr std::array<std::string_view, 5> rawValues<PointerMode>{"none", "glow", "push", "vortex", "calm"};

template <typename E>
constexpr std::string_view rawValue(E value) {
  return rawValues<E>[static_cast<std::size_t>(value)];
}

template <typename E>
constexpr std::optional<E> fromRawValue(std::string_view raw) {
  for (std::size_t i = 0; i < rawValues<E>.size(); ++i) {
    if (rawValues<E>[i] == raw) return static_cast<E>(i);
  }
  return std::nullopt;
}

/// One line for each drive mode, for the settings window.
std::string_view description(Visualizer mode);

/// Every user setting: what is shown, where, how it looks and what drives it. A plain value: copied, compared, replaced
/// as a whole. It holds whatever was stored; values out of range are clamped where they are used.  Units: heights and
/// paddings are points; fades, emit positions and the pointer radius are shares of the band (0 to 1); dissipations are
/// the share kept per 60 Hz frame; latitudes and longitudes are decimal degrees, north and east positive.
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

/// The range that the settings window offers for each number, by the field's name.
namespace ranges {
#define VELORIA_NUMBER(type, name, initial, group, low, high) inline constexpr Range name{low, high};
#include "settings/NimbraConfigFields.h"
}  // namespace ranges

}  // namespace veloria
