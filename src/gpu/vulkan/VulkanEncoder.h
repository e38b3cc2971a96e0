#pragma once

#include <vulkan/vulkan_core.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "gpu/CommandBuffer.h"
#include "gpu/vulkan/VulkanBindings.h"
#include "gpu/vulkan/VulkanPipeline.h"
#include "gpu/vulkan/VulkanUniforms.h"

namespace veloria::gpu::vulkan {

class VulkanCommandBuffer;

/// What an encoder has set.
struct BoundState {
  const VulkanProgram* program = nullptr;
  BoundTextures textures{};
  UniformSlice bytes;
  std::size_t byteCount = 0;
};

/// Binds states into a command buffer, leaving out what is bound already.
class VulkanBinder {
 public:
  void begin(VkCommandBuffer commands) { *this = VulkanBinder(commands); }
  void bind(const BoundState& state, VkDescriptorSet textures);

  VulkanBinder() = default;

 private:
  explicit VulkanBinder(VkCommandBuffer commands) : commands_(commands) {}

  VkCommandBuffer commands_ = VK_NULL_HANDLE;
  VkPipeline pipeline_ = VK_NULL_HANDLE;
  VkPipelineLayout layout_ = VK_NULL_HANDLE;
  VkDescriptorSet textures_ = VK_NULL_HANDLE;
  UniformSlice bytes_;
};

class VulkanComputeEncoder final : public ComputeEncoder {
 public:
  explicit VulkanComputeEncoder(VulkanCommandBuffer& buffer) : buffer_(buffer) {}
  void begin();

 private:
  void doSetPipeline(const ComputePipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDispatch(std::uint32_t width, std::uint32_t height) override;
  void doEnd() override;

  void recordBarrier();

  VulkanCommandBuffer& buffer_;
  BoundState state_;
  VulkanBinder binder_;
};

/// A render pass can't hold barriers, so its draws are kept until it ends: what they read is known then, and one
/// barrier in front of the pass covers everything.
class VulkanRenderEncoder final : public RenderEncoder {
 public:
  explicit VulkanRenderEncoder(VulkanCommandBuffer& buffer) : buffer_(buffer) {}
  void begin(const VulkanTexture& target);

 private:
  void doSetPipeline(const RenderPipeline& pipeline) override;
  void doSetTexture(const Texture& texture, std::uint32_t index) override;
  void doSetBytes(std::span<const std::byte> bytes) override;
  void doDraw(std::uint32_t vertexCount) override;
  void doEnd() override;

  struct Draw {
    BoundState state;
    VkDescriptorSet textures = VK_NULL_HANDLE;
    std::uint32_t vertexCount = 0;
  };
  void recordBarrier();
  void recordPass();

  VulkanCommandBuffer& buffer_;
  const VulkanTexture* target_ = nullptr;
  BoundState state_;
  std::vector<Draw> draws_;
};

}  // namespace veloria::gpu::vulkan
