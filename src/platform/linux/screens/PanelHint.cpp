#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

std::string withAdvice(const char* sentence) {
  return std::string(sentence) +
         " In the settings (start veloria again to open them), under Bar, choose the layer \"Over the bar\", or raise "
         "\"Bleed\".";
}

}  // namespace

std::string opaquePanelHint() {
  return withAdvice("The panel at the top of the screen is opaque and hides the light.");
}

std::string unknownPanelHint() {
  return withAdvice(
      "The panel at the top of the screen may hide the light; Veloria cannot tell whether it is transparent.");
}

std::string unreportedPanelHint() {
  return withAdvice(
      "This desktop does not report its panel's height: set NIMBRA_BAR_HEIGHT to its height in points. The panel may "
      "hide the light.");
}

}  // namespace veloria
