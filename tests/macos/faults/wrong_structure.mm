// expect: no viable conversion from 'MTLSize' to 'struct CGSize'
#import <QuartzCore/QuartzCore.h>

void resize(CAMetalLayer* layer) {
  layer.drawableSize = MTLSizeMake(64, 64, 1);
}
