// expect: implicit conversion turns floating-point number into integer
#import <QuartzCore/QuartzCore.h>

void count(CAMetalLayer* layer, double wanted) {
  layer.maximumDrawableCount = wanted;
}
