#include "gpu/vulkan/VulkanContext.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

bool offersSwapchain(VkPhysicalDevice device) {
  std::uint32_t count = 0;
  if (vkEnumerateDeviceExtensionProperties(device, nullptr, &count, nullptr) != VK_SUCCESS) return false;
  std::vector<VkExtensionProperties> extensions(count);
  vkEnumerateDeviceExtensionProperties(device, nullptr, &count, extensions.data());
  return std::any_of(extensions.begin(), extensions.end(), [](const VkExtensionProperties& extension) {
    return std::strcmp(extension.extensionName, VK_KHR_SWAPCHAIN_EXTENSION_NAME) == 0;
  });
}

std::uint64_t lowBits(std::uint32_t count) {
  return count >= 64 ? UINT64_MAX : (std::uint64_t{1} << count) - 1;
}

}  // namespace

VulkanContext::VulkanContext(const VulkanOptions& options)
    : instance_(options.validation || validationInEnvironment(), options.validationHandler) {
  chooseDevice(options.gpu);
  makeDevice();
  readLimits(options.groupSize);
  if (instance_.debugUtils()) loadDebugFunctions();
}

void VulkanContext::chooseDevice(const std::string& wish) {
  const std::vector<VkPhysicalDevice> devices = instance_.physicalDevices();
  std::vector<DeviceInfo> infos;
  for (std::size_t index = 0; index < devices.size(); ++index) {
    infos.push_back(describeDevice(devices[index], static_cast<std::uint32_t>(index)));
  }
  physicalDevice_ = devices[vulkan::chooseDevice(infos, wish)];
  queueFamily_ = findQueueFamily(physicalDevice_);
  vkGetPhysicalDeviceProperties(physicalDevice_, &properties_);
  vkGetPhysicalDeviceMemoryProperties(physicalDevice_, &memory_);
}

void VulkanContext::makeDevice() {
  const float priority = 1;
  auto queueInfo = typed<VkDeviceQueueCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO);
  queueInfo.queueFamilyIndex = queueFamily_;
  queueInfo.queueCount = 1;
  queueInfo.pQueuePriorities = &priority;

  auto timeline =
      typed<VkPhysicalDeviceTimelineSemaphoreFeatures>(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_TIMELINE_SEMAPHORE_FEATURES);
  timeline.timelineSemaphore = VK_TRUE;
  VkPhysicalDeviceFeatures features{};
  features.shaderStorageImageExtendedFormats = VK_TRUE;
  features.shaderStorageImageWriteWithoutFormat = VK_TRUE;

  // The extension may exist although the instance has no surfaces; the loader then refuses it.
  limits_.swapchains = offersSwapchain(physicalDevice_) && vkGetPhysicalDeviceSurfaceSupportKHR != nullptr;
  const std::array<const char*, 1> extensions{VK_KHR_SWAPCHAIN_EXTENSION_NAME};
  auto info = typed<VkDeviceCreateInfo>(VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO);
  info.pNext = &timeline;
  info.queueCreateInfoCount = 1;
  info.pQueueCreateInfos = &queueInfo;
  info.pEnabledFeatures = &features;
  info.enabledExtensionCount = limits_.swapchains ? static_cast<std::uint32_t>(extensions.size()) : 0;
  info.ppEnabledExtensionNames = extensions.data();
  VkDevice device = VK_NULL_HANDLE;
  check(vkCreateDevice(physicalDevice_, &info, nullptr, &device), "vkCreateDevice");
  device_.reset(device);
  vkGetDeviceQueue(device, queueFamily_, 0, &queue_);
}

void VulkanContext::readLimits(Size groupSize) {
  const VkPhysicalDeviceLimits& limits = properties_.limits;
  limits_.uniformAlignment = std::max<VkDeviceSize>(limits.minUniformBufferOffsetAlignment, 16);
  Size group{std::clamp(groupSize.width, 1U, limits.maxComputeWorkGroupSize[0]),
             std::clamp(groupSize.height, 1U, limits.maxComputeWorkGroupSize[1])};
  while (group.width * group.height > limits.maxComputeWorkGroupInvocations) {
    std::uint32_t& longer = group.height > 1 ? group.height : group.width;
    longer /= 2;
  }
  limits_.groupSize = group;

  std::uint32_t count = 0;
  vkGetPhysicalDeviceQueueFamilyProperties(physicalDevice_, &count, nullptr);
  std::vector<VkQueueFamilyProperties> families(count);
  vkGetPhysicalDeviceQueueFamilyProperties(physicalDevice_, &count, families.data());
  const std::uint32_t bits = families[queueFamily_].timestampValidBits;
  limits_.timestampMask = lowBits(bits);
  limits_.secondsPerTick = bits == 0 ? 0 : static_cast<double>(limits.timestampPeriod) * 1e-9;
}

void VulkanContext::loadDebugFunctions() {
  const auto load = [this](const char* name) { return vkGetInstanceProcAddr(instance_.get(), name); };
  setName_ = reinterpret_cast<PFN_vkSetDebugUtilsObjectNameEXT>(load("vkSetDebugUtilsObjectNameEXT"));
  beginLabel_ = reinterpret_cast<PFN_vkCmdBeginDebugUtilsLabelEXT>(load("vkCmdBeginDebugUtilsLabelEXT"));
  endLabel_ = reinterpret_cast<PFN_vkCmdEndDebugUtilsLabelEXT>(load("vkCmdEndDebugUtilsLabelEXT"));
}

void VulkanContext::requireAlive() const {
  if (lost_) throw DeviceLostError("the device \"" + std::string(properties_.deviceName) + "\" was lost");
}

void VulkanContext::checkAlive(VkResult result, const char* what) {
  if (result == VK_ERROR_DEVICE_LOST) markLost();
  check(result, what);
}

std::uint32_t VulkanContext::memoryType(std::uint32_t allowed, VkMemoryPropertyFlags required,
                                        VkMemoryPropertyFlags preferred) const {
  for (const VkMemoryPropertyFlags wanted : {required | preferred, required}) {
    for (std::uint32_t index = 0; index < memory_.memoryTypeCount; ++index) {
      const bool fits = (memory_.memoryTypes[index].propertyFlags & wanted) == wanted;
      if ((allowed >> index & 1U) != 0 && fits) return index;
    }
  }
  throw DeviceError("the device has no memory of the kind that is needed");
}

MemoryOwner VulkanContext::allocate(const VkMemoryRequirements& requirements, VkMemoryPropertyFlags required,
                                    VkMemoryPropertyFlags preferred) const {
  auto info = typed<VkMemoryAllocateInfo>(VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO);
  info.allocationSize = requirements.size;
  info.memoryTypeIndex = memoryType(requirements.memoryTypeBits, required, preferred);
  VkDeviceMemory memory = VK_NULL_HANDLE;
  check(vkAllocateMemory(device(), &info, nullptr, &memory), "vkAllocateMemory");
  return {device(), memory};
}

VulkanBuffer VulkanContext::makeBuffer(VkDeviceSize size, VkBufferUsageFlags usage,
                                       VkMemoryPropertyFlags preferred) const {
  auto info = typed<VkBufferCreateInfo>(VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO);
  info.size = size;
  info.usage = usage;
  VkBuffer handle = VK_NULL_HANDLE;
  check(vkCreateBuffer(device(), &info, nullptr, &handle), "vkCreateBuffer");
  VulkanBuffer result;
  result.buffer = {device(), handle};

  VkMemoryRequirements requirements{};
  vkGetBufferMemoryRequirements(device(), handle, &requirements);
  result.memory =
      allocate(requirements, VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT, preferred);
  check(vkBindBufferMemory(device(), handle, result.memory.get(), 0), "vkBindBufferMemory");
  void* mapped = nullptr;
  check(vkMapMemory(device(), result.memory.get(), 0, VK_WHOLE_SIZE, 0, &mapped), "vkMapMemory");
  result.bytes = {static_cast<std::byte*>(mapped), static_cast<std::size_t>(size)};
  return result;
}

CommandPoolOwner VulkanContext::makeCommandPool() const {
  auto info = typed<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
  info.flags = VK_COMMAND_POOL_CREATE_TRANSIENT_BIT;
  info.queueFamilyIndex = queueFamily_;
  return created<CommandPoolOwner>(vkCreateCommandPool, device(), info, "vkCreateCommandPool");
}

VkCommandBuffer VulkanContext::allocateCommandBuffer(VkCommandPool pool) const {
  auto info = typed<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
  info.commandPool = pool;
  info.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
  info.commandBufferCount = 1;
  VkCommandBuffer commands = VK_NULL_HANDLE;
  check(vkAllocateCommandBuffers(device(), &info, &commands), "vkAllocateCommandBuffers");
  return commands;
}

SemaphoreOwner VulkanContext::makeSemaphore() const {
  auto info = typed<VkSemaphoreCreateInfo>(VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO);
  return created<SemaphoreOwner>(vkCreateSemaphore, device(), info, "vkCreateSemaphore");
}

void VulkanContext::setName(VkObjectType type, std::uint64_t handle, const std::string& name) const {
  if (setName_ == nullptr || name.empty()) return;
  auto info = typed<VkDebugUtilsObjectNameInfoEXT>(VK_STRUCTURE_TYPE_DEBUG_UTILS_OBJECT_NAME_INFO_EXT);
  info.objectType = type;
  info.objectHandle = handle;
  info.pObjectName = name.c_str();
  setName_(device(), &info);
}

void VulkanContext::beginLabel(VkCommandBuffer commands, std::string_view label) const {
  if (beginLabel_ == nullptr) return;
  const std::string text(label);
  auto info = typed<VkDebugUtilsLabelEXT>(VK_STRUCTURE_TYPE_DEBUG_UTILS_LABEL_EXT);
  info.pLabelName = text.c_str();
  beginLabel_(commands, &info);
}

void VulkanContext::endLabel(VkCommandBuffer commands) const {
  if (endLabel_ != nullptr) endLabel_(commands);
}

}  // namespace veloria::gpu::vulkan
