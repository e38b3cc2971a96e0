// expect: requires a bridged cast
#import <QuartzCore/QuartzCore.h>

CALayer* layerOf(void* pointer) {
  return (CALayer*)pointer;
}
