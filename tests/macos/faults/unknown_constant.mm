// expect: undeclared identifier 'MTLPixelFormatRGBA16'
#import <Metal/Metal.h>

MTLPixelFormat format() {
  return MTLPixelFormatRGBA16;
}
