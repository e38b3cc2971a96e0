#include "gpu/metal/MetalPipeline.h"

#include "gpu/metal/MetalError.h"
#include "gpu/metal/MetalFormat.h"
#include "gpu/metal/MetalGroupSize.h"
#include "gpu/metal/MetalLibrary.h"

namespace veloria::gpu::metal {

namespace {

constexpr MTLPipelineOption wantedReflection = MTLPipelineOptionArgumentInfo | MTLPipelineOptionBufferTypeInfo;

BindingKind kindOf(id<MTLBinding> binding) {
  switch (binding.type) {
    case MTLBindingTypeTexture:
      return BindingKind::texture;
    case MTLBindingTypeBuffer:
      return BindingKind::buffer;
    case MTLBindingTypeSampler:
      return BindingKind::sampler;
    default:
      return BindingKind::other;
  }
}

FunctionBindings bindingsOf(NSArray* reflected, const std::string& function) {
  FunctionBindings bindings;
  for (id<MTLBinding> binding in reflected) {
    if (!binding.used) continue;
    const BindingKind kind = kindOf(binding);
    const NSUInteger bytes =
        kind == BindingKind::buffer ? static_cast<id<MTLBufferBinding>>(binding).bufferDataSize : 0;
    addBinding(bindings, kind, binding.index, bytes, function);
  }
  return bindings;
}

MTLSize groupSizeOf(id<MTLComputePipelineState> state) {
  const Size size = groupSizeFor(static_cast<std::uint32_t>(state.threadExecutionWidth),
                                 static_cast<std::uint32_t>(state.maxTotalThreadsPerThreadgroup));
  return MTLSizeMake(size.width, size.height, 1);
}

MTLRenderPipelineDescriptor* describe(const MetalLibrary& library, const RenderPipelineDescriptor& wanted) {
  const TargetKind target = targetKind(wanted.format);
  MTLRenderPipelineDescriptor* descriptor = [MTLRenderPipelineDescriptor new];
  descriptor.label = metalString(wanted.label);
  descriptor.vertexFunction = library.function(wanted.vertexFunction, target, wanted.variant);
  descriptor.fragmentFunction = library.function(wanted.fragmentFunction, target, wanted.variant);
  descriptor.colorAttachments[0].pixelFormat = metalFormat(wanted.format);
  return descriptor;
}

}  // namespace

MetalComputePipeline::MetalComputePipeline(id<MTLDevice> device, const MetalLibrary& library,
                                           const std::string& function)
    : ComputePipeline(function) {
  @autoreleasepool {
    MTLComputePipelineReflection* reflection = nil;
    NSError* error = nil;
    state_ = [device newComputePipelineStateWithFunction:library.function(function, TargetKind::light, 0)
                                                 options:wantedReflection
                                              reflection:&reflection
                                                   error:&error];
    if (state_ == nil) fail("making compute pipeline " + function, error);
    bindings_ = bindingsOf(reflection.bindings, function);
    groupSize_ = groupSizeOf(state_);
  }
}

MetalRenderPipeline::MetalRenderPipeline(id<MTLDevice> device, const MetalLibrary& library,
                                         const RenderPipelineDescriptor& descriptor)
    : RenderPipeline(descriptor) {
  @autoreleasepool {
    MTLRenderPipelineReflection* reflection = nil;
    NSError* error = nil;
    state_ = [device newRenderPipelineStateWithDescriptor:describe(library, descriptor)
                                                  options:wantedReflection
                                               reflection:&reflection
                                                    error:&error];
    if (state_ == nil) fail("making render pipeline " + descriptor.fragmentFunction, error);
    bindings_ = bindingsOf(reflection.fragmentBindings, descriptor.fragmentFunction);
  }
}

}  // namespace veloria::gpu::metal
