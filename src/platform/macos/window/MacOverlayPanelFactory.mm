#include "platform/macos/window/MacOverlayPanelFactory.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "platform/macos/window/MacOverlayPanel.h"
#include "platform/macos/window/MenuBarVisibility.h"

namespace veloria {

MacOverlayPanelFactory::MacOverlayPanelFactory(MetalSurfaceMaker makeSurface, std::optional<long> debugLevel)
    : makeSurface_(std::move(makeSurface)), debugLevel_(debugLevel) {}

std::unique_ptr<OverlayPanel> MacOverlayPanelFactory::makePanel(const Screen& screen) {
  @autoreleasepool {
    return std::make_unique<MacOverlayPanel>(screen, makeSurface_, debugLevel_);
  }
}

std::string MacOverlayPanelFactory::visibilityHint(const Screen&, OverlayLevel level) {
  return menuBarHint(level, [NSWorkspace sharedWorkspace].accessibilityDisplayShouldReduceTransparency);
}

}  // namespace veloria
