// expect: no known class method for selector 'renderPass'
#import <Metal/Metal.h>

MTLRenderPassDescriptor* make() {
  return [MTLRenderPassDescriptor renderPass];
}
