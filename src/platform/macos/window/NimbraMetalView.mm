#include "platform/macos/window/NimbraMetalView.h"

#import <QuartzCore/QuartzCore.h>

namespace {

/// Sets the layer's colour space; false where the system has none of this name.
BOOL setColorSpace(CAMetalLayer* layer, CFStringRef name) {
  const CGColorSpaceRef space = CGColorSpaceCreateWithName(name);
  if (space == nullptr) return NO;
  layer.colorspace = space;
  CGColorSpaceRelease(space);
  return YES;
}

}  // namespace

@implementation NimbraMetalView

- (instancetype)initWithSize:(NSSize)size {
  self = [super initWithFrame:CGRectMake(0, 0, size.width, size.height) device:nil];
  if (self == nil) return nil;
  self.framebufferOnly = NO;
  self.autoResizeDrawable = YES;
  self.enableSetNeedsDisplay = NO;
  self.paused = YES;
  self.clearColor = MTLClearColorMake(0, 0, 0, 0);
  return self;
}

- (BOOL)isOpaque {
  return NO;
}

- (NSView*)hitTest:(NSPoint)point {
  (void)point;
  return nil;
}

- (BOOL)acceptsFirstResponder {
  return NO;
}

// Extended range whatever the settings say; the next time they are applied they win.
- (void)viewDidChangeBackingProperties {
  [super viewDidChangeBackingProperties];
  [self configureLayerForHdr:YES];
}

- (void)configureLayerForHdr:(BOOL)hdr {
  if (![self.layer isKindOfClass:[CAMetalLayer class]]) return;
  CAMetalLayer* layer = static_cast<CAMetalLayer*>(self.layer);
  layer.opaque = NO;
  layer.backgroundColor = nil;
  const BOOL extended = hdr && setColorSpace(layer, kCGColorSpaceExtendedLinearDisplayP3);
  layer.wantsExtendedDynamicRangeContent = extended;
  if (!extended) setColorSpace(layer, kCGColorSpaceDisplayP3);
}

@end
