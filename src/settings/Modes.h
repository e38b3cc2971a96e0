#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace veloria {

/// The mode vocabularies of the settings record. Each is stored by its raw value; a lookup is exact and
/// case-sensitive, and an unknown raw value gives nothing. The order of the values is the order of the choices that a
/// person is offered.

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

}  // namespace veloria
