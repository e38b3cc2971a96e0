#include "platform/macos/window/NimbraPanel.h"

namespace {

constexpr NSWindowStyleMask style = NSWindowStyleMaskNonactivatingPanel;
static_assert(static_cast<NSUInteger>(style) == 128);

constexpr NSWindowCollectionBehavior behavior =
    NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary |
    NSWindowCollectionBehaviorIgnoresCycle | NSWindowCollectionBehaviorFullScreenNone;
static_assert(static_cast<NSUInteger>(behavior) == 593);

}  // namespace

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
