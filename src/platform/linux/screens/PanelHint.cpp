#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

std::string withAdvice(const char* sentence) {
  return std::string(sentence) +
         " In the settings (start veloria again to open them), under Bar, choose a layer above the panel, or a "
         "bleed below it.";
}

}  // namespace

std::string opaquePanelHint() {
  return withAdvice("The panel at the top of the screen is opaque and hides the light.");
}

std::string unknownPanelHint() {
  return withAdvice("The panel at the top of the screen may hide the light; whether it is see-through can't be told.");
}

std::string untoldPanelHint() {
  return withAdvice(
      "This desktop does not tell how high its panel is: set NIMBRA_BAR_HEIGHT to its height in points. The panel may "
      "hide the light.");
}

}  // namespace veloria
