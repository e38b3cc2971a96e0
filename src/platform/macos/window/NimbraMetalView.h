#pragma once

#import <MetalKit/MetalKit.h>

/// The overlay's view: transparent, never takes a click or the keyboard, and draws by its own timer. Main thread.
@interface NimbraMetalView : MTKView

/// At the origin, `size` in points. Starts paused, without a device.
- (instancetype)initWithSize:(NSSize)size;

/// Sets up the layer: transparent, with extended range where `hdr` asks for it and the system has the colours for it,
/// else plain Display P3. Nothing while the layer is of another kind.
- (void)configureLayerForHdr:(BOOL)hdr;

@end
