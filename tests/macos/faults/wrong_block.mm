// expect: with an rvalue of type 'void (^)(NSString *__strong)'
#import <Metal/Metal.h>

void listen(id<MTLCommandBuffer> commands) {
  [commands addCompletedHandler:^(NSString* text) {
    (void)text;
  }];
}
