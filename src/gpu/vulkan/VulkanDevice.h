#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <concepts>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "gpu/Device.h"
#include "gpu/vulkan/VulkanCompletion.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanPipeline.h"
#include "gpu/vulkan/VulkanPipelineCache.h"

namespace veloria::gpu::vulkan {

class VulkanCommandBuffer;

class VulkanDevice final : public Device {
 public:
  explicit VulkanDevice(const VulkanOptions& options);
  ~VulkanDevice() override;

  std::string name() const override { return context_.properties().deviceName; }
  bool lost() const override { return context_.lost(); }
  void waitIdle() override;

  VulkanContext& context() { return context_; }
  const VulkanContext& context() const { return context_; }
  VulkanTimeline& timeline() { return timeline_; }
  VulkanRetirement& retirement() { return retirement_; }
  VulkanCompletion& completion() { return completion_; }
  VulkanLayouts& layouts() { return layouts_; }
  VulkanHazards& hazards() { return hazards_; }
  VkPipelineCache pipelineCache() const { return pipelineCache_.get(); }

  std::uint64_t nextPass() { return ++passes_; }
  std::uint64_t passes() const { return passes_; }
  std::uint64_t nextTextureId() { return ++textureIds_; }
  void textureReleased() { ++texturesReleased_; }
  std::uint64_t texturesReleased() const { return texturesReleased_; }
  /// A copy of the name that lives as long as the device, one for all equal ones.
  const char* intern(const std::string& name) { return names_.insert(name).first->c_str(); }

  /// Keeps count of the command buffers that are being encoded.
  void bufferOpened(VulkanCommandBuffer& buffer);
  void bufferClosed(VulkanCommandBuffer& buffer);
  /// A command buffer that is one full barrier; may be submitted any number of times at once.
  VkCommandBuffer fullBarrier() const { return fullBarrier_; }

  /// Submits what `record(VkCommandBuffer)` records, behind and before full barriers. Returns its number.
  template <std::invocable<VkCommandBuffer> Record>
  std::uint64_t submitOnce(Record record) {
    OneTime& once = beginOnce();
    record(once.commands);
    return endOnce(once);
  }

 private:
  struct OneTime {
    CommandPoolOwner pool;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    std::uint64_t number = 0;
  };
  std::unique_ptr<Library> doMakeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<CommandQueue> doMakeCommandQueue() override;
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<ComputePipeline> doMakeComputePipeline(const Library& library, const std::string& function) override;
  std::unique_ptr<RenderPipeline> doMakeRenderPipeline(const Library& library,
                                                       const RenderPipelineDescriptor& descriptor) override;

  void recordFullBarrier();
  OneTime& beginOnce();
  OneTime& freeOnce();
  std::uint64_t endOnce(OneTime& once);

  VulkanContext context_;
  VulkanTimeline timeline_;
  VulkanRetirement retirement_;
  VulkanPipelineCache pipelineCache_;
  VulkanLayouts layouts_;
  VulkanHazards hazards_;
  std::uint64_t passes_ = 0;
  std::atomic<std::uint64_t> textureIds_{0};
  std::atomic<std::uint64_t> texturesReleased_{0};
  std::set<std::string> names_;
  std::vector<VulkanCommandBuffer*> openBuffers_;
  CommandPoolOwner barrierPool_;
  VkCommandBuffer fullBarrier_ = VK_NULL_HANDLE;
  std::vector<OneTime> oneTimes_;
  VulkanCompletion completion_;
};

/// The device behind the interface. Throws PreconditionError when it is another back end's.
VulkanDevice& vulkanDevice(Device& device);

}  // namespace veloria::gpu::vulkan
