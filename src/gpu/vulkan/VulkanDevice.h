#pragma once

#include <vulkan/vulkan_core.h>

#include <atomic>
#include <concepts>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "gpu/Device.h"
#include "gpu/vulkan/VulkanBindings.h"
#include "gpu/vulkan/VulkanCompletion.h"
#include "gpu/vulkan/VulkanContext.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "gpu/vulkan/VulkanHazards.h"
#include "gpu/vulkan/VulkanPipeline.h"

namespace veloria::gpu::vulkan {

class VulkanDevice final : public Device {
 public:
  explicit VulkanDevice(const VulkanOptions& options);
  ~VulkanDevice() override;

  std::string name() const override { return context_.properties().deviceName; }
  bool lost() const override { return context_.lost(); }
  void waitIdle() override;
  std::unique_ptr<Library> makeLibrary(std::span<const std::byte> bytes) override;
  std::unique_ptr<FrameQueue> makeFrameQueue() override;

  VulkanContext& context() { return context_; }
  const VulkanContext& context() const { return context_; }
  VulkanTimeline& timeline() { return timeline_; }
  VulkanRetirement& retirement() { return retirement_; }
  VulkanCompletion& completion() { return completion_; }
  const VulkanLayout& layout() const { return layout_; }
  /// One colour attachment, cleared and stored, in the general layout before and after.
  VkRenderPass renderPassFor(PixelFormat format);
  VulkanHazards& hazards() { return hazards_; }
  VkPipelineCache pipelineCache() const { return pipelineCache_.get(); }

  std::uint64_t nextPass() { return ++passes_; }
  std::uint64_t nextTextureId() { return ++textureIds_; }
  void textureReleased() { ++texturesReleased_; }
  std::uint64_t texturesReleased() const { return texturesReleased_; }
  /// A copy of the name that lives as long as the device; equal names share one.
  const char* intern(const std::string& name) { return names_.insert(name).first->c_str(); }

  /// Submits the commands of `record(VkCommandBuffer)` between two full barriers. Returns the submission's number.
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
  std::shared_ptr<Texture> doMakeTexture(const TextureDescriptor& descriptor) override;
  std::unique_ptr<Pipeline> doMakePipeline(const Library& library, const PipelineDescriptor& descriptor) override;

  OneTime& beginOnce();
  OneTime& freeOnce();
  std::uint64_t endOnce(OneTime& once);

  VulkanContext context_;
  VulkanTimeline timeline_;
  VulkanRetirement retirement_;
  VulkanPipelineCache pipelineCache_;
  VulkanLayout layout_;
  std::map<PixelFormat, RenderPassOwner> renderPasses_;
  VulkanHazards hazards_;
  std::uint64_t passes_ = 0;
  std::atomic<std::uint64_t> textureIds_{0};
  std::atomic<std::uint64_t> texturesReleased_{0};
  std::set<std::string> names_;
  std::vector<OneTime> oneTimes_;
  VulkanCompletion completion_;
};

/// The device behind the interface. Throws PreconditionError for another back end's.
VulkanDevice& vulkanDevice(Device& device);

}  // namespace veloria::gpu::vulkan
