#pragma once

#include <cstdint>
#include <string>

#include "gpu/Types.h"

namespace veloria::gpu {

/// A compiled shader library: named functions (`k_` compute, `v_` vertex, `f_` fragment).
class Library {
 public:
  virtual ~Library() = default;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  virtual bool contains(const std::string& function) const = 0;

 protected:
  Library() = default;
};

/// A compute function made ready for the device.
class ComputePipeline {
 public:
  virtual ~ComputePipeline() = default;
  ComputePipeline(const ComputePipeline&) = delete;
  ComputePipeline& operator=(const ComputePipeline&) = delete;

  const std::string& function() const { return function_; }

 protected:
  explicit ComputePipeline(std::string function) : function_(std::move(function)) {}

 private:
  std::string function_;
};

/// What a render pipeline is made of. There is no vertex input and no depth; blending is off, every pass clears.
struct RenderPipelineDescriptor {
  std::string vertexFunction;
  std::string fragmentFunction;
  PixelFormat format = PixelFormat::invalid;  ///< of colour attachment 0
  std::string label;
  /// Specialisation constant 3 of the fragment function: parts of it that most pipelines do without.
  std::uint32_t variant = 0;
};

class RenderPipeline {
 public:
  virtual ~RenderPipeline() = default;
  RenderPipeline(const RenderPipeline&) = delete;
  RenderPipeline& operator=(const RenderPipeline&) = delete;

  const RenderPipelineDescriptor& descriptor() const { return descriptor_; }

 protected:
  explicit RenderPipeline(RenderPipelineDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

 private:
  RenderPipelineDescriptor descriptor_;
};

}  // namespace veloria::gpu
