#include "gpu/metal/MetalPipeline.h"

#import <dispatch/dispatch.h>

#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalGroupSize.h"
#include "gpu/metal/MetalTexture.h"

namespace veloria::gpu::metal {

namespace {

id<MTLLibrary> makeLibrary(id<MTLDevice> device, std::span<const std::byte> bytes) {
  dispatch_data_t data = dispatch_data_create(bytes.data(), bytes.size(), nil, DISPATCH_DATA_DESTRUCTOR_DEFAULT);
  NSError* error = nil;
  id<MTLLibrary> library = [device newLibraryWithData:data error:&error];
  if (library == nil) fail("the shader library can't be used", error);
  return library;
}

id<MTLComputePipelineState> makeComputeState(id<MTLDevice> device, const MetalLibrary& library,
                                             const PipelineDescriptor& wanted) {
  NSError* error = nil;
  id<MTLComputePipelineState> state =
      [device newComputePipelineStateWithFunction:library.function(wanted.function, TargetKind::light, wanted.variant)
                                            error:&error];
  if (state == nil) fail("making compute pipeline " + wanted.function, error);
  return state;
}

id<MTLRenderPipelineState> makeRenderState(id<MTLDevice> device, const MetalLibrary& library,
                                           const PipelineDescriptor& wanted) {
  const TargetKind target = targetKind(wanted.format);
  MTLRenderPipelineDescriptor* descriptor = [MTLRenderPipelineDescriptor new];
  descriptor.label = metalString(wanted.function);
  descriptor.vertexFunction = library.function(wanted.vertexFunction, target, wanted.variant);
  descriptor.fragmentFunction = library.function(wanted.function, target, wanted.variant);
  descriptor.colorAttachments[0].pixelFormat = metalFormat(wanted.format);
  NSError* error = nil;
  id<MTLRenderPipelineState> state = [device newRenderPipelineStateWithDescriptor:descriptor error:&error];
  if (state == nil) fail("making render pipeline " + wanted.function, error);
  return state;
}

MTLSize groupSizeOf(id<MTLComputePipelineState> state) {
  const Size size = groupSizeFor(static_cast<std::uint32_t>(state.threadExecutionWidth),
                                 static_cast<std::uint32_t>(state.maxTotalThreadsPerThreadgroup));
  return MTLSizeMake(size.width, size.height, 1);
}

}  // namespace

MetalLibrary::MetalLibrary(id<MTLDevice> device, std::span<const std::byte> bytes) {
  @autoreleasepool {
    library_ = makeLibrary(device, bytes);
    for (NSString* name in library_.functionNames) functions_.insert(plainString(name));
  }
}

id<MTLFunction> MetalLibrary::function(const std::string& name, TargetKind target, std::uint32_t variant) const {
  MTLFunctionConstantValues* constants = [MTLFunctionConstantValues new];
  [constants setConstantValue:&target type:MTLDataTypeUInt atIndex:2];
  [constants setConstantValue:&variant type:MTLDataTypeUInt atIndex:3];
  NSError* error = nil;
  id<MTLFunction> function = [library_ newFunctionWithName:metalString(name) constantValues:constants error:&error];
  if (function == nil) fail("making function " + name, error);
  return function;
}

MetalPipeline::MetalPipeline(id<MTLDevice> device, const MetalLibrary& library, const PipelineDescriptor& descriptor)
    : Pipeline(descriptor) {
  @autoreleasepool {
    if (draws()) {
      renderState_ = makeRenderState(device, library, descriptor);
    } else {
      computeState_ = makeComputeState(device, library, descriptor);
      groupSize_ = groupSizeOf(computeState_);
    }
  }
}

}  // namespace veloria::gpu::metal
