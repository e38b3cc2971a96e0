#pragma once

#import <AppKit/AppKit.h>
#import <MetalKit/MetalKit.h>

/// The band's view: transparent, never takes a click or the keyboard, and draws by its own timer. Main thread.
@interface NimbraMetalView : MTKView

/// At the origin, `size` in points. Starts paused, without a device.
- (instancetype)initWithSize:(NSSize)size;

/// Sets up the layer: transparent, with extended range if `hdr` asks for it and the system has the color space, else
/// plain Display P3. Does nothing while the layer is of another kind.
- (void)configureLayerForHdr:(BOOL)hdr;

@end

/// The band's window: without a border, transparent, click-through, on every space and in no window cycle. Never the
/// key or main window. Created hidden. Main thread.
@interface NimbraPanel : NSPanel

/// `frame` in points, in the system's global coordinates.
- (instancetype)initWithFrame:(NSRect)frame view:(NSView*)view;

@end
