#pragma once

#include <string_view>
#include <utility>

#include "gpu/Pipeline.h"
#include "gpu/cpu/Call.h"

namespace veloria::gpu::cpu {

class CpuLibrary final : public Library {
 public:
  explicit CpuLibrary(const FunctionTable& table) : table_(table) {}

  /// Vertex functions are known by their name alone: all of them cover the target.
  bool contains(const std::string& function) const override;
  /// nullptr if there is none.
  const Function* find(std::string_view name) const;

 private:
  const FunctionTable& table_;
};

class CpuPipeline final : public Pipeline {
 public:
  CpuPipeline(PipelineDescriptor descriptor, const Function& function)
      : Pipeline(std::move(descriptor)), function_(function) {}
  const Function& function() const { return function_; }

 private:
  const Function& function_;
};

}  // namespace veloria::gpu::cpu
