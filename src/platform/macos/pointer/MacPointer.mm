#include "platform/macos/pointer/MacPointer.h"

#import <AppKit/AppKit.h>

namespace veloria {

PointerSource macPointerSource() {
  // The system's global coordinates are the portable ones.
  return {.location = []() -> std::optional<Point> {
            const NSPoint now = NSEvent.mouseLocation;
            return Point{now.x, now.y};
          },
          .reason = {}};
}

}  // namespace veloria
