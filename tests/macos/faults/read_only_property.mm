// expect: readonly property
#import <Metal/Metal.h>

void resize(id<MTLTexture> texture) {
  texture.width = 5;
}
