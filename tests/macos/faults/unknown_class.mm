// expect: use of undeclared identifier 'MTLTextureDescription'
#import <Metal/Metal.h>

id make() {
  return [MTLTextureDescription new];
}
