#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>

#include "gpu/Types.h"

namespace veloria::gpu {

class ComputePipeline;
class RenderPipeline;

/// A compiled shader library: named functions (`k_` compute, `v_` vertex, `f_` fragment).
class Library {
 public:
  virtual ~Library() = default;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  virtual bool contains(const std::string& function) const = 0;

 protected:
  Library() = default;

 private:
  friend class Device;
  // What is in use now, for whoever asks for the same again.
  mutable std::map<std::string, std::weak_ptr<ComputePipeline>> computePipelines_;
  mutable std::map<std::tuple<std::string, std::string, PixelFormat, std::uint32_t>, std::weak_ptr<RenderPipeline>>
      renderPipelines_;
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
