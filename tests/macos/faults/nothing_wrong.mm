// expect: nothing
#import <Metal/Metal.h>
#import <QuartzCore/QuartzCore.h>

void encode(id<MTLComputeCommandEncoder> encoder, id<MTLComputePipelineState> pipeline, id<MTLTexture> texture) {
  encoder.label = @"step";
  [encoder setComputePipelineState:pipeline];
  [encoder setTexture:texture atIndex:0];
  [encoder dispatchThreads:MTLSizeMake(64, 64, 1) threadsPerThreadgroup:MTLSizeMake(32, 8, 1)];
  [encoder endEncoding];
}

id<CAMetalDrawable> next(CAMetalLayer* layer, id<MTLCommandBuffer> commands) {
  layer.pixelFormat = MTLPixelFormatRGBA16Float;
  [commands addCompletedHandler:^(id<MTLCommandBuffer> done) {
    (void)done.GPUEndTime;
  }];
  return [layer nextDrawable];
}
