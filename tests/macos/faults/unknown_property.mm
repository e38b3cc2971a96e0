// expect: property 'framebufferOnlyy' not found
#import <QuartzCore/QuartzCore.h>

void configure(CAMetalLayer* layer) {
  layer.framebufferOnlyy = NO;
}
