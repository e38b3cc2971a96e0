#include "gpu/vulkan/VulkanLibrary.h"

#include <cstring>
#include <utility>
#include <vector>

#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr std::size_t maxLibraryBytes = std::size_t{16} << 20;

std::vector<std::uint32_t> toWords(std::span<const std::byte> bytes) {
  if (bytes.size() > maxLibraryBytes) throw DeviceError("the shader library is above 16 MiB");
  if (bytes.empty() || bytes.size() % sizeof(std::uint32_t) != 0) {
    throw DeviceError("the shader library is not usable: not a whole number of SPIR-V words");
  }
  std::vector<std::uint32_t> words(bytes.size() / sizeof(std::uint32_t));
  std::memcpy(words.data(), bytes.data(), bytes.size());
  return words;
}

ShaderModuleOwner makeModule(const VulkanContext& context, const std::vector<std::uint32_t>& words) {
  VkShaderModuleCreateInfo info{};
  info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
  info.codeSize = words.size() * sizeof(std::uint32_t);
  info.pCode = words.data();
  VkShaderModule module = VK_NULL_HANDLE;
  check(vkCreateShaderModule(context.device(), &info, nullptr, &module), "vkCreateShaderModule");
  return {context.device(), module};
}

}  // namespace

VulkanLibrary::VulkanLibrary(const VulkanContext& context, std::span<const std::byte> bytes)
    : VulkanLibrary(context, toWords(bytes)) {}

VulkanLibrary::VulkanLibrary(const VulkanContext& context, std::vector<std::uint32_t> words)
    : functions_(findFunctions(words)), reflection_(words), module_(makeModule(context, words)) {}

FunctionInfo VulkanLibrary::describe(const std::string& function, VkShaderStageFlagBits stage) const {
  if (functions_.at(function) != stage)
    throw DeviceError("function " + function + " is of another stage than asked for");
  return reflection_.describe(function, stage);
}

}  // namespace veloria::gpu::vulkan
