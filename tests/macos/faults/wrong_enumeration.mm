// expect: assigning to 'MTLStoreAction' from incompatible type
#import <Metal/Metal.h>

void store(MTLRenderPassColorAttachmentDescriptor* colour) {
  colour.storeAction = MTLLoadActionClear;
}
