#pragma once

#include <set>
#include <string>
#include <utility>

#include "gpu/Pipeline.h"

namespace veloria::gpu::recording {

class RecordingLibrary final : public Library {
 public:
  explicit RecordingLibrary(std::set<std::string> functions) : functions_(std::move(functions)) {}
  bool contains(const std::string& function) const override { return functions_.contains(function); }

 private:
  std::set<std::string> functions_;
};

class RecordingComputePipeline final : public ComputePipeline {
 public:
  explicit RecordingComputePipeline(const std::string& function) : ComputePipeline(function) {}
};

class RecordingRenderPipeline final : public RenderPipeline {
 public:
  explicit RecordingRenderPipeline(const RenderPipelineDescriptor& descriptor) : RenderPipeline(descriptor) {}
};

}  // namespace veloria::gpu::recording
