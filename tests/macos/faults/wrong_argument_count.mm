// expect: no known instance method for selector 'dispatchThreads:'
#import <Metal/Metal.h>

void run(id<MTLComputeCommandEncoder> encoder) {
  [encoder dispatchThreads:MTLSizeMake(1, 1, 1)];
}
