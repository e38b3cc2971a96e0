#pragma once

#include <memory>
#include <span>
#include <string>

#include "gpu/Device.h"
#include "gpu/cpu/CpuFactory.h"
#include "gpu/cpu/CpuFrame.h"

namespace veloria::gpu::cpu {

class CpuDevice final : public Device {
 public:
  CpuDevice(const FunctionTable& functions, InstructionSet set, unsigned threads);
  ~CpuDevice() override { waitIdle(); }

  std::string name() const override;
  bool lost() const override { return false; }
  void waitIdle() override { worker_.waitIdle(); }
  bool hasCompiledFunctions() const override { return true; }
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override;

 private:
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) override;

  const FunctionTable& functions_;
  InstructionSet set_;
  CpuWorker worker_;
};

}  // namespace veloria::gpu::cpu
