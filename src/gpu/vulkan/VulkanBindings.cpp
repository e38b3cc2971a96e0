#include "gpu/vulkan/VulkanBindings.h"

#include <algorithm>
#include <cstring>

#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint32_t setsPerPool = 64;
constexpr std::size_t maxSets = 512;  // more than any frame has; above, old combinations are forgotten
constexpr VkDeviceSize blockBytes = VkDeviceSize{64} << 10;
// The set's window is as long as the longest bytes, wherever its offset puts it.
constexpr VkDeviceSize windowBytes = maxPassBytes;

VkDescriptorType typeOf(std::size_t binding) {
  return binding < maxTextures ? VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER : VK_DESCRIPTOR_TYPE_STORAGE_IMAGE;
}

SamplerOwner makeSampler(const VulkanContext& context) {
  auto info = typed<VkSamplerCreateInfo>(VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO);
  info.magFilter = VK_FILTER_LINEAR;
  info.minFilter = VK_FILTER_LINEAR;
  info.mipmapMode = VK_SAMPLER_MIPMAP_MODE_NEAREST;
  info.addressModeU = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  info.addressModeV = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  info.addressModeW = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
  return created<SamplerOwner>(vkCreateSampler, context.device(), info, "vkCreateSampler");
}

DescriptorSetLayoutOwner makeSetLayout(const VulkanContext& context,
                                       std::span<const VkDescriptorSetLayoutBinding> bindings) {
  auto info = typed<VkDescriptorSetLayoutCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO);
  info.bindingCount = static_cast<std::uint32_t>(bindings.size());
  info.pBindings = bindings.data();
  return created<DescriptorSetLayoutOwner>(vkCreateDescriptorSetLayout, context.device(), info,
                                           "vkCreateDescriptorSetLayout");
}

DescriptorSetLayoutOwner makeTexturesLayout(const VulkanContext& context, VkSampler sampler) {
  std::array<VkDescriptorSetLayoutBinding, maxTextures + maxImages + 1> bindings{};
  for (std::size_t index = 0; index < bindings.size(); ++index) {
    const bool sampled = index < maxTextures;
    bindings[index].binding = static_cast<std::uint32_t>(index);
    bindings[index].descriptorType = typeOf(index);
    bindings[index].descriptorCount = 1;
    bindings[index].stageFlags =
        VK_SHADER_STAGE_COMPUTE_BIT | (sampled ? std::uint32_t{VK_SHADER_STAGE_FRAGMENT_BIT} : 0U);
    bindings[index].pImmutableSamplers = sampled ? &sampler : nullptr;
  }
  return makeSetLayout(context, bindings);
}

DescriptorSetLayoutOwner makeBytesLayout(const VulkanContext& context) {
  VkDescriptorSetLayoutBinding binding{};
  binding.descriptorType = VK_DESCRIPTOR_TYPE_UNIFORM_BUFFER_DYNAMIC;
  binding.descriptorCount = 1;
  binding.stageFlags = VK_SHADER_STAGE_COMPUTE_BIT | VK_SHADER_STAGE_FRAGMENT_BIT;
  return makeSetLayout(context, {&binding, 1});
}

PipelineLayoutOwner makePipelineLayout(const VulkanContext& context, VkDescriptorSetLayout textures,
                                       VkDescriptorSetLayout bytes) {
  const std::array sets{textures, bytes};
  auto info = typed<VkPipelineLayoutCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO);
  info.setLayoutCount = static_cast<std::uint32_t>(sets.size());
  info.pSetLayouts = sets.data();
  return created<PipelineLayoutOwner>(vkCreatePipelineLayout, context.device(), info, "vkCreatePipelineLayout");
}

DescriptorPoolOwner makePool(const VulkanContext& context, std::uint32_t sets,
                             std::span<const VkDescriptorPoolSize> sizes) {
  auto info = typed<VkDescriptorPoolCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO);
  info.maxSets = sets;
  info.poolSizeCount = static_cast<std::uint32_t>(sizes.size());
  info.pPoolSizes = sizes.data();
  return created<DescriptorPoolOwner>(vkCreateDescriptorPool, context.device(), info, "vkCreateDescriptorPool");
}

VkResult allocateSet(const VulkanContext& context, VkDescriptorPool pool, VkDescriptorSetLayout layout,
                     VkDescriptorSet& set) {
  auto info = typed<VkDescriptorSetAllocateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO);
  info.descriptorPool = pool;
  info.descriptorSetCount = 1;
  info.pSetLayouts = &layout;
  return vkAllocateDescriptorSets(context.device(), &info, &set);
}

}  // namespace

VulkanLayout::VulkanLayout(const VulkanContext& context)
    : sampler_(makeSampler(context)),
      textures_(makeTexturesLayout(context, sampler_.get())),
      bytes_(makeBytesLayout(context)),
      pipeline_(makePipelineLayout(context, textures_.get(), bytes_.get())) {}

void VulkanTextureSets::begin(std::uint64_t texturesReleased) {
  if (texturesReleased == texturesReleased_ && entries_.size() < maxSets) return;
  for (const auto& pool : pools_) vkResetDescriptorPool(context_.device(), pool.get(), 0);
  pool_ = 0;
  entries_.clear();
  texturesReleased_ = texturesReleased;
}

std::array<const Texture*, VulkanTextureSets::bindingCount> VulkanTextureSets::texturesOf(const Pass& pass) {
  std::array<const Texture*, bindingCount> textures{};
  std::copy(pass.textures.begin(), pass.textures.end(), textures.begin());
  std::copy(pass.images.begin(), pass.images.end(), textures.begin() + maxTextures);
  if (!pass.pipeline.draws()) textures.back() = &pass.target;
  return textures;
}

VkDescriptorSet VulkanTextureSets::setFor(const Pass& pass) {
  const auto textures = texturesOf(pass);
  Ids ids{};
  std::transform(textures.begin(), textures.end(), ids.begin(), [](const Texture* texture) {
    return texture == nullptr ? 0 : static_cast<const VulkanTexture*>(texture)->id();
  });
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.ids == ids; });
  if (found != entries_.end()) return found->set;
  const VkDescriptorSet set = allocate();
  fill(set, textures);
  entries_.push_back({ids, set});
  return set;
}

VkDescriptorSet VulkanTextureSets::allocate() {
  for (; pool_ < pools_.size(); ++pool_) {
    if (const VkDescriptorSet set = tryAllocate()) return set;
  }
  constexpr std::array<VkDescriptorPoolSize, 2> sizes{
      {{VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, setsPerPool * std::uint32_t{maxTextures}},
       {VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, setsPerPool * std::uint32_t{maxImages + 1}}}};
  pools_.push_back(makePool(context_, setsPerPool, sizes));
  if (const VkDescriptorSet set = tryAllocate()) return set;
  throw DeviceError("vkAllocateDescriptorSets failed on a fresh pool");
}

VkDescriptorSet VulkanTextureSets::tryAllocate() const {
  VkDescriptorSet set = VK_NULL_HANDLE;
  const VkResult result = allocateSet(context_, pools_[pool_].get(), layout_.textures(), set);
  return result == VK_SUCCESS ? set : VK_NULL_HANDLE;
}

// A binding without a texture stays unwritten; that is allowed while the function does not use it.
void VulkanTextureSets::fill(VkDescriptorSet set, std::span<const Texture* const> textures) const {
  std::array<VkDescriptorImageInfo, bindingCount> images{};
  std::array<VkWriteDescriptorSet, bindingCount> writes{};
  std::uint32_t count = 0;
  for (std::size_t index = 0; index < textures.size(); ++index) {
    if (textures[index] == nullptr) continue;
    images[count] = {VK_NULL_HANDLE, static_cast<const VulkanTexture*>(textures[index])->view(),
                     VK_IMAGE_LAYOUT_GENERAL};
    VkWriteDescriptorSet& write = writes[count];
    write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
    write.dstSet = set;
    write.dstBinding = static_cast<std::uint32_t>(index);
    write.descriptorCount = 1;
    write.descriptorType = typeOf(index);
    write.pImageInfo = &images[count];
    ++count;
  }
  vkUpdateDescriptorSets(context_.device(), count, writes.data(), 0, nullptr);
}

VulkanUniforms::Block VulkanUniforms::makeBlock() const {
  Block block;
  block.buffer = context_.makeBuffer(blockBytes, VK_BUFFER_USAGE_UNIFORM_BUFFER_BIT, 0);
  const VkDescriptorPoolSize size{VK_DESCRIPTOR_TYPE_UNIFORM_BUFFER_DYNAMIC, 1};
  block.pool = makePool(context_, 1, {&size, 1});
  check(allocateSet(context_, block.pool.get(), layout_.bytes(), block.set), "vkAllocateDescriptorSets (bytes)");
  const VkDescriptorBufferInfo window{block.buffer.buffer.get(), 0, windowBytes};
  auto write = typed<VkWriteDescriptorSet>(VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET);
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
