#pragma once

#include <optional>
#include <span>

#include "settings/Palette.h"

namespace veloria {

/// The palette "Custom" of a small picture: the mean colours of its four most voted hues out of eighteen, ordered from
/// dark to bright by their luminance (Rec. 709 weights on encoded values) and then boosted. A picture with two or three
/// hues repeats the one with the fewest votes. Bright and saturated pixels have the most votes, dark ones (largest
/// component at most 0.08) none. Empty if fewer than two hues have votes: a black, grey or one-coloured picture.
///
/// `pixels`: any number in any order, encoded sRGB, components are clamped to 0 to 1; a pixel with a component that is
/// not finite does not vote. Any thread.
std::optional<Palette> wallpaperPalette(std::span<const ColorStop> pixels);

/// The colour at full brightness (largest component about 1) with more saturation; (0.3, 0.4, 0.6) for black, which has
/// no hue to keep. `color`: each component 0 to 1, and so is the result.
ColorStop boosted(const ColorStop& color);

}  // namespace veloria
