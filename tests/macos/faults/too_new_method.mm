// expect: no known instance method for selector 'newMTL4CommandQueue'
#import <Metal/Metal.h>

id make(id<MTLDevice> device) {
  return [device newMTL4CommandQueue];
}
