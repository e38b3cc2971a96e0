#pragma once

#include <optional>
#include <span>

#include "scene/NimbraScript.h"
#include "settings/NimbraConfig.h"

/// How a settings record becomes the record that is drawn. Pure functions; nothing here keeps state.
namespace veloria {

/// Makes the palette one called "Custom" with these stops.
void setCustomPalette(NimbraConfig& config, std::span<const ColorStop> stops);

/// The stops that a script's scene is drawn with, the first that there is: the agent's, the wallpaper's where the
/// script asks for it, the script's own. Empty when the record's palette stays. The view lives as long as the
/// arguments.
std::span<const ColorStop> chosenStops(const NimbraScript& script, const std::optional<Palette>& wallpaper,
                                       std::span<const ColorStop> agentPalette);

/// Assigns the script's constants, then its bindings in order, to the fields that they drive.
void assignParameters(NimbraConfig& config, const NimbraScript& script, const ChannelValues& channels);

/// A copy with the script applied: its palette (`agentPalette` empty: no override), constants and bindings.
NimbraConfig applying(const NimbraConfig& config, const NimbraScript& script, const ChannelValues& channels,
                      const std::optional<Palette>& wallpaper, std::span<const ColorStop> agentPalette);

/// NimbraConfig::applyingTempo() in place, without copying the record's texts.
void applyTempo(NimbraConfig& config);

/// The strength of an alert flash, 0 (none) to 1: falls smoothly to 0 over the last `alertFor` seconds before
/// `alertUntil`. Times are wall-clock seconds since 1970.
double alertEnvelope(double alertUntil, double alertFor, double nowWallClock);

/// Adds the alert flash in place. Exposure, glow and emit may leave their ranges, on purpose. `alertPalette` empty: the
/// palette stays.
void applyAlert(NimbraConfig& config, double alertUntil, double alertFor, std::span<const ColorStop> alertPalette,
                double nowWallClock);

/// A copy with the alert flash.
NimbraConfig applyingAlert(NimbraConfig config, double alertUntil, double alertFor,
                           std::span<const ColorStop> alertPalette, double nowWallClock);

}  // namespace veloria
