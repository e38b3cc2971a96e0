#include "gpu/vulkan/VulkanBindings.h"

#include <algorithm>
#include <string>

#include "gpu/vulkan/VulkanError.h"
#include "gpu/vulkan/VulkanTexture.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::uint32_t setsPerPool = 64;
constexpr std::size_t maxSets = 512;  // more than any frame has; above, old combinations are forgotten

[[noreturn]] void refuse(const char* function, std::size_t index, const std::string& text) {
  throw PreconditionError(std::string(function) + ", texture " + std::to_string(index) + ": " + text);
}

void requireFit(const VulkanProgram& program, std::size_t index, const VulkanTexture* texture) {
  const TextureBinding& binding = program.bindings.textures[index];
  if (texture == nullptr) refuse(program.name, index, "none is set");
  const TextureUsage usage = texture->descriptor().usage;
  if (binding.reads && !contains(usage, TextureUsage::shaderRead)) refuse(program.name, index, "not made to be read");
  if (binding.writes && !contains(usage, TextureUsage::shaderWrite)) {
    refuse(program.name, index, "not made to be written");
  }
  if (binding.format != PixelFormat::invalid && binding.format != texture->format()) {
    refuse(program.name, index,
           std::string("its format is ") + pixelFormatName(texture->format()) + ", the function declares " +
               pixelFormatName(binding.format));
  }
}

DescriptorPoolOwner makePool(const VulkanContext& context) {
  constexpr std::uint32_t textures = setsPerPool * (maxTextureIndex + 1);
  const std::array<VkDescriptorPoolSize, 2> sizes{
      {{VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, textures}, {VK_DESCRIPTOR_TYPE_STORAGE_IMAGE, textures}}};
  VkDescriptorPoolCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
  info.maxSets = setsPerPool;
  info.poolSizeCount = static_cast<std::uint32_t>(sizes.size());
  info.pPoolSizes = sizes.data();
  VkDescriptorPool pool = VK_NULL_HANDLE;
  check(vkCreateDescriptorPool(context.device(), &info, nullptr, &pool), "vkCreateDescriptorPool (textures)");
  return {context.device(), pool};
}

}  // namespace

void VulkanBindings::begin(std::uint64_t texturesReleased) {
  if (texturesReleased == texturesReleased_ && entries_.size() < maxSets) return;
  for (const auto& pool : pools_) vkResetDescriptorPool(context_.device(), pool.get(), 0);
  pool_ = 0;
  entries_.clear();
  texturesReleased_ = texturesReleased;
}

VkDescriptorSet VulkanBindings::setFor(const VulkanProgram& program, const BoundTextures& textures) {
  Key key;
  key.layout = program.layout->textures.get();
  for (std::size_t index = 0; index < textures.size(); ++index) {
    if (program.bindings.textures[index].kind == BindingKind::none) continue;
    requireFit(program, index, textures[index]);
    key.textures[index] = textures[index]->id();
  }
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.key == key; });
  if (found != entries_.end()) return found->set;
  const VkDescriptorSet set = allocate(key.layout);
  fill(set, program.bindings, textures);
  entries_.push_back({key, set});
  return set;
}

VkDescriptorSet VulkanBindings::allocate(VkDescriptorSetLayout layout) {
  for (; pool_ < pools_.size(); ++pool_) {
    if (const VkDescriptorSet set = tryAllocate(layout)) return set;
  }
  pools_.push_back(makePool(context_));
  if (const VkDescriptorSet set = tryAllocate(layout)) return set;
  throw DeviceError("vkAllocateDescriptorSets failed on a fresh pool");
}

VkDescriptorSet VulkanBindings::tryAllocate(VkDescriptorSetLayout layout) const {
  VkDescriptorSetAllocateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
  info.descriptorPool = pools_[pool_].get();
  info.descriptorSetCount = 1;
  info.pSetLayouts = &layout;
  VkDescriptorSet set = VK_NULL_HANDLE;
  return vkAllocateDescriptorSets(context_.device(), &info, &set) == VK_SUCCESS ? set : VK_NULL_HANDLE;
}

void VulkanBindings::fill(VkDescriptorSet set, const FunctionBindings& bindings, const BoundTextures& textures) const {
  std::array<VkDescriptorImageInfo, maxTextureIndex + 1> images{};
  std::array<VkWriteDescriptorSet, maxTextureIndex + 1> writes{};
  std::uint32_t count = 0;
  for (std::uint32_t index = 0; index < textures.size(); ++index) {
    const BindingKind kind = bindings.textures[index].kind;
    if (kind == BindingKind::none) continue;
    images[count] = {VK_NULL_HANDLE, textures[index]->view(), VK_IMAGE_LAYOUT_GENERAL};
    VkWriteDescriptorSet& write = writes[count];
    write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
    write.dstSet = set;
    write.dstBinding = index;
    write.descriptorCount = 1;
    write.descriptorType =
        kind == BindingKind::sampled ? VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER : VK_DESCRIPTOR_TYPE_STORAGE_IMAGE;
    write.pImageInfo = &images[count];
    ++count;
  }
  vkUpdateDescriptorSets(context_.device(), count, writes.data(), 0, nullptr);
}

}  // namespace veloria::gpu::vulkan
