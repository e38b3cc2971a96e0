#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "gpu/Types.h"

namespace veloria::gpu {

/// What a pipeline is made of. There is no vertex input and no depth; blending is off.
struct PipelineDescriptor {
  std::string function;          ///< compute or fragment function
  std::string vertexFunction{};  ///< of a fragment function: one that covers the target with three vertices
  PixelFormat format = PixelFormat::invalid;  ///< of a fragment function's target
  std::uint32_t variant = 0;                  ///< bits that switch on parts of the function
  auto operator<=>(const PipelineDescriptor&) const = default;
};

/// A function made ready for the device.
class Pipeline {
 public:
  virtual ~Pipeline() = default;
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  const PipelineDescriptor& descriptor() const { return descriptor_; }
  /// True for a fragment function, false for a compute function.
  bool draws() const { return !descriptor_.vertexFunction.empty(); }

 protected:
  explicit Pipeline(PipelineDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

 private:
  PipelineDescriptor descriptor_;
};

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
  // Those in use, to be shared.
  mutable std::map<PipelineDescriptor, std::weak_ptr<Pipeline>> pipelines_;
};

}  // namespace veloria::gpu
