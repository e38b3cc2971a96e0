// expect: no matching function for call to 'MTLCreateSystemDefaultDevice'
#import <Metal/Metal.h>

id<MTLDevice> make() {
  return MTLCreateSystemDefaultDevice(0);
}
