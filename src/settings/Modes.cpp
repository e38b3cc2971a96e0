#include "settings/Modes.h"

namespace veloria {

std::string_view description(Visualizer mode) {
  static constexpr std::array<std::string_view, 6> lines{
      "Curl noise drives it forever. No inputs, no permissions.",
      "Reacts to whatever is playing. Captures system audio.",
      "Driven by coding agents through the nimbra command.",
      "Colour and motion follow the current conditions.",
      "Wind speed and gusts drive the flow directly.",
      "Your own script, in the language below.",
  };
  static_assert(lines.size() == rawValues<Visualizer>.size());
  return lines[static_cast<std::size_t>(mode)];
}

}  // namespace veloria
