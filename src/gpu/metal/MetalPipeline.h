#pragma once

#import <Metal/Metal.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>

#include "gpu/Pipeline.h"

namespace veloria::gpu::metal {

/// A compiled library (the bytes of a .metallib file).
class MetalLibrary final : public Library {
 public:
  /// Throws DeviceError if the bytes are not a library.
  MetalLibrary(id<MTLDevice> device, std::span<const std::byte> bytes);

  bool contains(const std::string& function) const override { return functions_.contains(function); }

  /// The function with its constants set. Throws DeviceError on failure.
  id<MTLFunction> function(const std::string& name, TargetKind target, std::uint32_t variant) const;

 private:
  id<MTLLibrary> library_;
  std::set<std::string> functions_;
};

/// One of the two states is nil.
class MetalPipeline final : public Pipeline {
 public:
  MetalPipeline(id<MTLDevice> device, const MetalLibrary& library, const PipelineDescriptor& descriptor);

  id<MTLComputePipelineState> computeState() const { return computeState_; }
  id<MTLRenderPipelineState> renderState() const { return renderState_; }
  MTLSize groupSize() const { return groupSize_; }

 private:
  id<MTLComputePipelineState> computeState_ = nil;
  id<MTLRenderPipelineState> renderState_ = nil;
  MTLSize groupSize_{};
};

}  // namespace veloria::gpu::metal
