#include "gpu/vulkan/VulkanUniforms.h"

#include <cstring>

#include "gpu/CommandBuffer.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr VkDeviceSize blockBytes = VkDeviceSize{64} << 10;
// The set's window is as long as the longest bytes, wherever its offset puts it.
constexpr VkDeviceSize windowBytes = maxInlineBytes;

}  // namespace

VulkanUniforms::Block VulkanUniforms::makeBlock() const {
  Block block;
  block.buffer = context_.makeBuffer(blockBytes, VK_BUFFER_USAGE_UNIFORM_BUFFER_BIT, 0);
  const VkDescriptorPoolSize size{VK_DESCRIPTOR_TYPE_UNIFORM_BUFFER_DYNAMIC, 1};
  VkDescriptorPoolCreateInfo poolInfo{};
  poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
  poolInfo.maxSets = 1;
  poolInfo.poolSizeCount = 1;
  poolInfo.pPoolSizes = &size;
  VkDescriptorPool pool = VK_NULL_HANDLE;
  check(vkCreateDescriptorPool(context_.device(), &poolInfo, nullptr, &pool), "vkCreateDescriptorPool (bytes)");
  block.pool = {context_.device(), pool};

  VkDescriptorSetAllocateInfo setInfo{};
  setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
  setInfo.descriptorPool = pool;
  setInfo.descriptorSetCount = 1;
  setInfo.pSetLayouts = &layout_;
  check(vkAllocateDescriptorSets(context_.device(), &setInfo, &block.set), "vkAllocateDescriptorSets (bytes)");
  const VkDescriptorBufferInfo window{block.buffer.buffer.get(), 0, windowBytes};
  VkWriteDescriptorSet write{};
  write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
  write.dstSet = block.set;
  write.descriptorCount = 1;
  write.descriptorType = VK_DESCRIPTOR_TYPE_UNIFORM_BUFFER_DYNAMIC;
  write.pBufferInfo = &window;
  vkUpdateDescriptorSets(context_.device(), 1, &write, 0, nullptr);
  return block;
}

UniformSlice VulkanUniforms::push(std::span<const std::byte> bytes) {
  if (block_ < blocks_.size() && offset_ + windowBytes > blockBytes) {
    ++block_;
    offset_ = 0;
  }
  if (block_ == blocks_.size()) blocks_.push_back(makeBlock());
  const Block& block = blocks_[block_];
  const UniformSlice slice{block.set, static_cast<std::uint32_t>(offset_)};
  std::memcpy(block.buffer.bytes.data() + offset_, bytes.data(), bytes.size());
  const VkDeviceSize alignment = context_.limits().uniformAlignment;
  offset_ += (bytes.size() + alignment - 1) / alignment * alignment;
  return slice;
}

void VulkanUniforms::rewind() {
  block_ = 0;
  offset_ = 0;
}

}  // namespace veloria::gpu::vulkan
