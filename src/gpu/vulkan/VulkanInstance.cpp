#include "gpu/vulkan/VulkanInstance.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "base/Log.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr const char* validationLayer = "VK_LAYER_KHRONOS_validation";

// Named here because their headers would pull the window systems' own headers in.
constexpr const char* xcbSurfaceExtension = "VK_KHR_xcb_surface";
constexpr const char* waylandSurfaceExtension = "VK_KHR_wayland_surface";

template <typename Properties>
bool named(const std::vector<Properties>& list, const char* name, char (Properties::*member)[256]) {
  return std::any_of(list.begin(), list.end(),
                     [&](const Properties& entry) { return std::strcmp(entry.*member, name) == 0; });
}

std::vector<VkExtensionProperties> instanceExtensions() {
  std::uint32_t count = 0;
  if (vkEnumerateInstanceExtensionProperties(nullptr, &count, nullptr) != VK_SUCCESS) return {};
  std::vector<VkExtensionProperties> extensions(count);
  vkEnumerateInstanceExtensionProperties(nullptr, &count, extensions.data());
  extensions.resize(count);
  return extensions;
}

bool validationLayerPresent() {
  std::uint32_t count = 0;
  if (vkEnumerateInstanceLayerProperties(&count, nullptr) != VK_SUCCESS) return false;
  std::vector<VkLayerProperties> layers(count);
  vkEnumerateInstanceLayerProperties(&count, layers.data());
  layers.resize(count);
  return named(layers, validationLayer, &VkLayerProperties::layerName);
}

// A Wayland socket is found through these variables; without them drivers only complain about the extension.
bool waylandPossible() {
  const char* display = std::getenv("WAYLAND_DISPLAY");
  return std::getenv("XDG_RUNTIME_DIR") != nullptr || (display != nullptr && *display == '/');
}

std::vector<const char*> wantedExtensions(bool validation) {
  const auto offered = instanceExtensions();
  std::vector<const char*> wanted;
  for (const char* name : {VK_KHR_SURFACE_EXTENSION_NAME, xcbSurfaceExtension, waylandSurfaceExtension,
                           VK_EXT_SWAPCHAIN_COLOR_SPACE_EXTENSION_NAME}) {
    if (name == waylandSurfaceExtension && !waylandPossible()) continue;
    if (named(offered, name, &VkExtensionProperties::extensionName)) wanted.push_back(name);
  }
  if (validation) wanted.push_back(VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
  return wanted;
}

DeviceType typeOf(VkPhysicalDeviceType type) {
  switch (type) {
    case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU:
      return DeviceType::discrete;
    case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU:
      return DeviceType::integrated;
    case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU:
      return DeviceType::virtualized;
    case VK_PHYSICAL_DEVICE_TYPE_CPU:
      return DeviceType::cpu;
    default:
      return DeviceType::other;
  }
}

bool hasFeatures(VkPhysicalDevice device) {
  auto timeline =
      typed<VkPhysicalDeviceTimelineSemaphoreFeatures>(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_TIMELINE_SEMAPHORE_FEATURES);
  auto features = typed<VkPhysicalDeviceFeatures2>(VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2);
  features.pNext = &timeline;
  vkGetPhysicalDeviceFeatures2(device, &features);
  return timeline.timelineSemaphore == VK_TRUE && features.features.shaderStorageImageExtendedFormats == VK_TRUE &&
         features.features.shaderStorageImageWriteWithoutFormat == VK_TRUE;
}

}  // namespace

struct VulkanInstance::Messages {
  ValidationHandler handler;
  std::atomic<std::uint64_t> count{0};
};

bool validationInEnvironment() {
  const char* value = std::getenv("VELORIA_VALIDATION");
  return value != nullptr && std::string_view(value) == "1";
}

void VulkanInstance::destroyMessenger(VkInstance instance, VkDebugUtilsMessengerEXT messenger,
                                      const VkAllocationCallbacks* allocator) {
  const auto destroy = reinterpret_cast<PFN_vkDestroyDebugUtilsMessengerEXT>(
      vkGetInstanceProcAddr(instance, "vkDestroyDebugUtilsMessengerEXT"));
  if (destroy != nullptr) destroy(instance, messenger, allocator);
}

VkBool32 VulkanInstance::report(VkDebugUtilsMessageSeverityFlagBitsEXT, VkDebugUtilsMessageTypeFlagsEXT,
                                const VkDebugUtilsMessengerCallbackDataEXT* data, void* user) {
  auto& messages = *static_cast<Messages*>(user);
  ++messages.count;
  if (messages.handler) {
    messages.handler(data->pMessage);
  } else {
    systemLog(data->pMessage);
  }
  return VK_FALSE;
}

VkDebugUtilsMessengerCreateInfoEXT VulkanInstance::messengerInfo() const {
  auto info = typed<VkDebugUtilsMessengerCreateInfoEXT>(VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT);
  info.messageSeverity =
      VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT | VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
  // Not the loader's own messages, which warn about drivers for other GPUs, and no advice on performance: that images
  // stay in the general layout is meant.
  info.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT;
  info.pfnUserCallback = &VulkanInstance::report;
  info.pUserData = messages_.get();
  return info;
}

VulkanInstance::VulkanInstance(bool validation, ValidationHandler handler) : messages_(std::make_shared<Messages>()) {
  loadVulkan();
  messages_->handler = std::move(handler);
  if (validation && !validationLayerPresent()) {
    throw DeviceError(std::string("validation is wanted, but ") + validationLayer + " is not installed");
  }
  auto application = typed<VkApplicationInfo>(VK_STRUCTURE_TYPE_APPLICATION_INFO);
  application.pApplicationName = "veloria";
  application.apiVersion = VK_API_VERSION_1_2;

  const std::array<VkValidationFeatureEnableEXT, 1> enabled{
      VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT};
  const VkDebugUtilsMessengerCreateInfoEXT messenger = messengerInfo();
  auto features = typed<VkValidationFeaturesEXT>(VK_STRUCTURE_TYPE_VALIDATION_FEATURES_EXT);
  features.pNext = &messenger;
  features.enabledValidationFeatureCount = static_cast<std::uint32_t>(enabled.size());
  features.pEnabledValidationFeatures = enabled.data();

  const std::vector<const char*> extensions = wantedExtensions(validation);
  auto info = typed<VkInstanceCreateInfo>(VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO);
  info.pApplicationInfo = &application;
  info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
  info.ppEnabledExtensionNames = extensions.data();
  if (validation) {
    info.pNext = &features;
    info.enabledLayerCount = 1;
    info.ppEnabledLayerNames = &validationLayer;
  }
  VkInstance instance = VK_NULL_HANDLE;
  const VkResult result = vkCreateInstance(&info, nullptr, &instance);
  if (result != VK_SUCCESS) throw NoDeviceError(std::string("no Vulkan here: vkCreateInstance: ") + resultName(result));
  loadFunctions(instance);
  instance_.reset(instance);
  if (validation) makeMessenger();
}

void VulkanInstance::makeMessenger() {
  const auto create = reinterpret_cast<PFN_vkCreateDebugUtilsMessengerEXT>(
      vkGetInstanceProcAddr(instance_.get(), "vkCreateDebugUtilsMessengerEXT"));
  if (create == nullptr) throw DeviceError("validation is wanted, but its messages are not available");
  const VkDebugUtilsMessengerCreateInfoEXT info = messengerInfo();
  VkDebugUtilsMessengerEXT messenger = VK_NULL_HANDLE;
  check(create(instance_.get(), &info, nullptr, &messenger), "vkCreateDebugUtilsMessengerEXT");
  messenger_ = {instance_.get(), messenger};
}

std::uint64_t VulkanInstance::messageCount() const {
  return messages_->count;
}

std::vector<VkPhysicalDevice> VulkanInstance::physicalDevices() const {
  std::uint32_t count = 0;
  if (vkEnumeratePhysicalDevices(instance_.get(), &count, nullptr) != VK_SUCCESS) return {};
  std::vector<VkPhysicalDevice> devices(count);
  if (vkEnumeratePhysicalDevices(instance_.get(), &count, devices.data()) < VK_SUCCESS) return {};
  devices.resize(count);
  return devices;
}

std::uint32_t findQueueFamily(VkPhysicalDevice device) {
  std::uint32_t count = 0;
  vkGetPhysicalDeviceQueueFamilyProperties(device, &count, nullptr);
  std::vector<VkQueueFamilyProperties> families(count);
  vkGetPhysicalDeviceQueueFamilyProperties(device, &count, families.data());
  constexpr VkQueueFlags both = VK_QUEUE_GRAPHICS_BIT | VK_QUEUE_COMPUTE_BIT;
  for (std::uint32_t index = 0; index < count; ++index) {
    if ((families[index].queueFlags & both) == both) return index;
  }
  return UINT32_MAX;
}

DeviceInfo describeDevice(VkPhysicalDevice device, std::uint32_t index) {
  VkPhysicalDeviceProperties properties{};
  vkGetPhysicalDeviceProperties(device, &properties);
  DeviceInfo info;
  info.index = index;
  info.name = properties.deviceName;
  info.type = typeOf(properties.deviceType);
  info.usable =
      properties.apiVersion >= VK_API_VERSION_1_2 && findQueueFamily(device) != UINT32_MAX && hasFeatures(device);
  return info;
}

}  // namespace veloria::gpu::vulkan
