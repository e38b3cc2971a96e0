// expect: no known instance method for selector 'setTexture:index:'
#import <Metal/Metal.h>

void bind(id<MTLComputeCommandEncoder> encoder, id<MTLTexture> texture) {
  [encoder setTexture:texture index:0];
}
