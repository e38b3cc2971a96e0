// expect: 'CALayer *
#import <QuartzCore/QuartzCore.h>

void bind(id<MTLComputeCommandEncoder> encoder, CALayer* layer) {
  [encoder setTexture:layer atIndex:0];
}
