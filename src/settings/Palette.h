#pragma once

#include <string>
#include <vector>

#include "base/Color.h"

namespace veloria {

/// A colour gradient, identified by its name. A palette that is drawn has at least four stops; the first four count,
/// from the first to the last colour of the gradient. Anything from outside is checked where it is decoded.
struct Palette {
  std::string name;
  std::vector<ColorStop> stops;
  bool operator==(const Palette&) const = default;

  /// The built-in palettes, in the order in which they are offered. Each has exactly four stops.
  static const std::vector<Palette>& presets();
};

}  // namespace veloria
