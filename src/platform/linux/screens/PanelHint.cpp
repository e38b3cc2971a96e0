#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

std::string panelAt(PanelEdge edge) {
  return std::string("The panel at the ") + nameOf(edge) + " of the screen";
}

std::string withAdvice(const std::string& sentence) {
  return sentence +
         " In the settings (start veloria again to open them), under Bar, choose the layer \"Over the bar\", or raise "
         "\"Bleed\".";
}

}  // namespace

std::string opaquePanelHint(PanelEdge edge) {
  return withAdvice(panelAt(edge) + " is opaque and hides the light.");
}

std::string unknownPanelHint(PanelEdge edge) {
  return withAdvice(panelAt(edge) + " may hide the light; Veloria cannot tell whether it is transparent.");
}

std::string desktopsOwnPanelHint(PanelEdge edge) {
  return panelAt(edge) +
         " may hide the light. The desktop draws it over all windows, so that only a clear panel shows the light "
         "behind "
         "it. In the settings (start veloria again to open them), under Bar, raise \"Bleed\" or choose the layer "
         "\"Whole desktop\".";
}

std::string unreportedPanelHint() {
  return withAdvice(
      "This desktop does not report its panel's height: set NIMBRA_BAR_HEIGHT to its height in points. The panel may "
      "hide the light.");
}

}  // namespace veloria
