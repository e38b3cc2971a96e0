#pragma once

#import <AppKit/AppKit.h>

/// The overlay's window: without a border, transparent, click-through, on every space and in no window cycle. Never the
/// key or main window. Made hidden. Main thread.
@interface NimbraPanel : NSPanel

/// `frame` in points, in the system's global coordinates.
- (instancetype)initWithFrame:(NSRect)frame view:(NSView*)view;

@end
