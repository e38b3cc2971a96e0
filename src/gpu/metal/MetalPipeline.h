#pragma once

#import <Metal/Metal.h>

#include "gpu/Pipeline.h"
#include "gpu/metal/MetalFunction.h"

namespace veloria::gpu::metal {

class MetalLibrary;

class MetalComputePipeline final : public ComputePipeline {
 public:
  MetalComputePipeline(id<MTLDevice> device, const MetalLibrary& library, const std::string& function);

  id<MTLComputePipelineState> state() const { return state_; }
  const FunctionBindings& bindings() const { return bindings_; }
  MTLSize groupSize() const { return groupSize_; }

 private:
  id<MTLComputePipelineState> state_;
  FunctionBindings bindings_;
  MTLSize groupSize_{};
};

class MetalRenderPipeline final : public RenderPipeline {
 public:
  MetalRenderPipeline(id<MTLDevice> device, const MetalLibrary& library, const RenderPipelineDescriptor& descriptor);

  id<MTLRenderPipelineState> state() const { return state_; }
  const FunctionBindings& bindings() const { return bindings_; }

 private:
  id<MTLRenderPipelineState> state_;
  FunctionBindings bindings_;
};

}  // namespace veloria::gpu::metal
