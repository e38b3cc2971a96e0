#include "scene/BuiltInScripts.h"

namespace veloria {

namespace {

constexpr std::string_view musicScript = R"scene(# Music — the curtains breathe with the mix.
bind exposure = 0.75 + level * 1.4 + bass * 1.1
bind emit     = 1.4 + bass * 1.8
bind curl     = 1.8 + mid * 5.0
bind speed    = 0.7 + level * 1.3
bind rays     = 0.45 + treble * 0.5
bind raysharp = 1.3 + treble * 2.6
bind glow     = 0.7 + bass * 1.4
bind hue      = t * 0.01 + mid * 0.08
bind shimmer  = 0.15 + treble * 0.9)scene";

constexpr std::string_view agentScript = R"scene(# AI agent — calm when idle, busy while working, red on failure.
# Drive it with:  nimbra set busy 1   /   nimbra fail   /   nimbra ok
palette #1a9bff #28e0c8 #8cff5a #ff3b5c
bind speed    = 0.45 + busy * 1.9
bind curl     = 1.2 + busy * 4.2
bind exposure = 0.75 + busy * 0.7 + err * 1.3
bind emit     = 1.1 + busy * 1.3
bind hue      = clamp(err * 0.92 + ok * 0.28, 0, 1)
bind rays     = 0.4 + busy * 0.5
bind glow     = 0.7 + err * 1.4)scene";

constexpr std::string_view weatherScript = R"scene(# Weather — cold is blue and still, warm is green, storms churn.
bind hue      = clamp(0.58 - (temp + 10) / 60 * 0.45, 0, 1)
bind wind     = 0.25 + wind / 18
bind shear    = 0.8 + gust / 14
bind curl     = 1.2 + rain * 4.5 + gust / 18
bind exposure = 1.25 - cloud * 0.45
bind ambient  = 0.02 + cloud * 0.05
bind speed    = 0.55 + wind / 28)scene";

constexpr std::string_view windScript = R"scene(# Wind speed — the nimbra is literally blown across the bar.
bind wind     = 0.15 + wind / 10
bind shear    = 0.6 + gust / 9
bind speed    = 0.5 + wind / 22
bind curl     = 1.1 + gust / 12
bind rays     = 0.4 + clamp(gust / 40, 0, 0.5)
bind exposure = 0.95 + clamp(wind / 50, 0, 0.5))scene";

}  // namespace

std::string_view builtInScript(Visualizer mode) {
  switch (mode) {
    case Visualizer::music:
      return musicScript;
    case Visualizer::agent:
      return agentScript;
    case Visualizer::weather:
      return weatherScript;
    case Visualizer::wind:
      return windScript;
    case Visualizer::autonomous:
    case Visualizer::script:
      return {};
  }
  return {};
}

std::string_view sceneScript(const NimbraConfig& settings) {
  return settings.visualizer == Visualizer::script ? std::string_view(settings.customScript)
                                                   : builtInScript(settings.visualizer);
}

}  // namespace veloria
