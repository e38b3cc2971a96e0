// expect: use of undeclared identifier 'MTLCreateDefaultDevice'
#import <Metal/Metal.h>

id<MTLDevice> make() {
  return MTLCreateDefaultDevice();
}
