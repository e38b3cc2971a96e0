#include "platform/macos/windows/NimbraPanel.h"

#import <QuartzCore/QuartzCore.h>

namespace {

constexpr NSWindowStyleMask style = NSWindowStyleMaskNonactivatingPanel;
static_assert(static_cast<NSUInteger>(style) == 128);

constexpr NSWindowCollectionBehavior behavior =
    NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary |
    NSWindowCollectionBehaviorIgnoresCycle | NSWindowCollectionBehaviorFullScreenNone;
static_assert(static_cast<NSUInteger>(behavior) == 593);

/// Sets the layer's color space; NO if the system has none of this name.
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

// Extended range until the settings are applied again.
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

@implementation NimbraPanel

- (instancetype)initWithFrame:(NSRect)frame view:(NSView*)view {
  self = [super initWithContentRect:frame styleMask:style backing:NSBackingStoreBuffered defer:NO];
  if (self == nil) return nil;
  self.floatingPanel = YES;
  self.hidesOnDeactivate = NO;
  self.releasedWhenClosed = NO;
  [self beClearAndUntouchable];
  self.animationBehavior = NSWindowAnimationBehaviorNone;
  self.collectionBehavior = behavior;
  self.displaysWhenScreenProfileChanges = YES;
  self.contentView = view;
  return self;
}

- (void)beClearAndUntouchable {
  self.opaque = NO;
  self.backgroundColor = [NSColor clearColor];
  self.hasShadow = NO;
  self.ignoresMouseEvents = YES;
  self.movableByWindowBackground = NO;
  self.movable = NO;
}

- (BOOL)canBecomeKeyWindow {
  return NO;
}

- (BOOL)canBecomeMainWindow {
  return NO;
}

@end
