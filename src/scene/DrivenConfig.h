#pragma once

#include <optional>
#include <span>

#include "scene/NimbraScript.h"
#include "settings/NimbraConfig.h"

/// How a settings record becomes the record that is drawn. Pure functions.
namespace veloria {

/// Sets a palette called "Custom" with these stops.
void setCustomPalette(NimbraConfig& config, std::span<const ColorStop> stops);

/// The stops that a script's scene is drawn with: the agent's, else the wallpaper's if the script asks for it, else the
/// script's own. Empty if the record's palette stays. The view lives as long as the arguments.
std::span<const ColorStop> chosenStops(const NimbraScript& script, const std::optional<Palette>& wallpaper,
                                       std::span<const ColorStop> agentPalette);

/// Assigns the script's constants, then its bindings in order, to the fields that they drive.
void assignParameters(NimbraConfig& config, const NimbraScript& script, const ChannelValues& channels);

/// NimbraConfig::applyingTempo() in place, without copying the record's texts.
void applyTempo(NimbraConfig& config);

/// The strength of an alert flash, 0 (none) to 1: falls smoothly to 0 over the last `alertFor` seconds before
/// `alertUntil`. Times are wall-clock seconds since 1970.
double alertEnvelope(double alertUntil, double alertFor, double nowWallClock);

/// Adds an alert flash of `strength`, above 0 to 1, in place. Exposure, glow and emit may leave their ranges, on
/// purpose. `ownPalette`: the flash has its own colors, whose hues are kept closer together.
void applyAlert(NimbraConfig& config, double strength, bool ownPalette);

}  // namespace veloria
