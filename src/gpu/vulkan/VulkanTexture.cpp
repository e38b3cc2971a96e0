#include "gpu/vulkan/VulkanTexture.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "gpu/Types.h"
#include "gpu/vulkan/VulkanDevice.h"
#include "gpu/vulkan/VulkanError.h"

namespace veloria::gpu::vulkan {

namespace {

constexpr VkImageSubresourceRange wholeColor{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};

std::string describe(const TextureDescriptor& descriptor) {
  return "texture \"" + descriptor.label + "\" (" + pixelFormatName(descriptor.format) + ", " +
         std::to_string(descriptor.size.width) + " x " + std::to_string(descriptor.size.height) + ")";
}

VkFormatFeatureFlags featuresOf(const VulkanContext& context, const TextureDescriptor& descriptor) {
  VkFormatProperties properties{};
  vkGetPhysicalDeviceFormatProperties(context.physicalDevice(), vulkanFormat(descriptor.format), &properties);
  const VkFormatFeatureFlags needed = neededFeatures(descriptor.usage);
  if ((properties.optimalTilingFeatures & needed) != needed) {
    throw DeviceError("the device can't use " + describe(descriptor) + " as wanted");
  }
  return properties.optimalTilingFeatures;
}

}  // namespace

VkFormat vulkanFormat(PixelFormat format) {
  switch (format) {
    case PixelFormat::r16Float:
      return VK_FORMAT_R16_SFLOAT;
    case PixelFormat::rg16Float:
      return VK_FORMAT_R16G16_SFLOAT;
    case PixelFormat::rgba8Unorm:
      return VK_FORMAT_R8G8B8A8_UNORM;
    case PixelFormat::bgra8Unorm:
      return VK_FORMAT_B8G8R8A8_UNORM;
    case PixelFormat::bgra8UnormSrgb:
      return VK_FORMAT_B8G8R8A8_SRGB;
    case PixelFormat::rgba16Float:
      return VK_FORMAT_R16G16B16A16_SFLOAT;
    case PixelFormat::invalid:
      break;
  }
  return VK_FORMAT_UNDEFINED;
}

PixelFormat pixelFormat(VkFormat format) {
  for (const PixelFormat candidate : {PixelFormat::r16Float, PixelFormat::rg16Float, PixelFormat::rgba8Unorm,
                                      PixelFormat::bgra8Unorm, PixelFormat::bgra8UnormSrgb, PixelFormat::rgba16Float}) {
    if (vulkanFormat(candidate) == format) return candidate;
  }
  return PixelFormat::invalid;
}

VkFormatFeatureFlags neededFeatures(TextureUsage usage) {
  VkFormatFeatureFlags features = 0;
  if (contains(usage, TextureUsage::shaderRead)) {
    features |= VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT | VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT;
  }
  if (contains(usage, TextureUsage::shaderWrite)) features |= VK_FORMAT_FEATURE_STORAGE_IMAGE_BIT;
  if (contains(usage, TextureUsage::renderTarget)) features |= VK_FORMAT_FEATURE_COLOR_ATTACHMENT_BIT;
  return features;
}

VkImageUsageFlags imageUsage(TextureUsage usage, VkFormatFeatureFlags features) {
  VkImageUsageFlags flags = VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
  if (contains(usage, TextureUsage::shaderRead)) {
    flags |= VK_IMAGE_USAGE_SAMPLED_BIT;
    if ((features & VK_FORMAT_FEATURE_STORAGE_IMAGE_BIT) != 0) flags |= VK_IMAGE_USAGE_STORAGE_BIT;
  }
  if (contains(usage, TextureUsage::shaderWrite)) flags |= VK_IMAGE_USAGE_STORAGE_BIT;
  if (contains(usage, TextureUsage::renderTarget)) flags |= VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
  return flags;
}

VulkanTexture::VulkanTexture(VulkanDevice& device, const TextureDescriptor& descriptor, VulkanDrawable* drawable)
    : Texture(descriptor), device_(device), id_(device.nextTextureId()), drawable_(drawable) {
  makeImage();
  makeView();
  makeFramebuffer();
  device_.submitOnce([this](VkCommandBuffer commands) {
    auto barrier = typed<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
    barrier.dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT;
    barrier.oldLayout = VK_IMAGE_LAYOUT_UNDEFINED;
    barrier.newLayout = VK_IMAGE_LAYOUT_GENERAL;
    barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image_;
    barrier.subresourceRange = wholeColor;
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr,
                         0, nullptr, 1, &barrier);
  });
}

VulkanTexture::VulkanTexture(VulkanDevice& device, const TextureDescriptor& descriptor, VkImage image,
                             VulkanDrawable& drawable)
    : Texture(descriptor), device_(device), id_(device.nextTextureId()), image_(image), drawable_(&drawable) {
  makeView();
  makeFramebuffer();
}

VulkanTexture::~VulkanTexture() {
  device_.textureReleased();
  device_.retirement().retire(std::make_shared<TextureResources>(std::move(resources_)));
}

void VulkanTexture::makeImage() {
  const VulkanContext& context = device_.context();
  auto info = typed<VkImageCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO);
  info.imageType = VK_IMAGE_TYPE_2D;
  info.format = vulkanFormat(format());
  info.extent = {size().width, size().height, 1};
  info.mipLevels = 1;
  info.arrayLayers = 1;
  info.samples = VK_SAMPLE_COUNT_1_BIT;
  info.tiling = VK_IMAGE_TILING_OPTIMAL;
  info.usage = imageUsage(descriptor().usage, featuresOf(context, descriptor()));
  info.initialLayout = VK_IMAGE_LAYOUT_UNDEFINED;
  const std::string what = "making " + describe(descriptor());
  check(vkCreateImage(context.device(), &info, nullptr, &image_), what.c_str());
  resources_.image = {context.device(), image_};
  VkMemoryRequirements requirements{};
  vkGetImageMemoryRequirements(context.device(), image_, &requirements);
  resources_.memory = context.allocate(requirements, 0, VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT);
  check(vkBindImageMemory(context.device(), image_, resources_.memory.get(), 0), what.c_str());
  context.setName(VK_OBJECT_TYPE_IMAGE, reinterpret_cast<std::uint64_t>(image_), descriptor().label);
}

void VulkanTexture::makeView() {
  const VkDevice device = device_.context().device();
  auto info = typed<VkImageViewCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO);
  info.image = image_;
  info.viewType = VK_IMAGE_VIEW_TYPE_2D;
  info.format = vulkanFormat(format());
  info.subresourceRange = wholeColor;
  resources_.view = created<ImageViewOwner>(vkCreateImageView, device, info, "vkCreateImageView");
}

void VulkanTexture::makeFramebuffer() {
  if (!contains(descriptor().usage, TextureUsage::renderTarget)) return;
  const VkDevice device = device_.context().device();
  const VkImageView view = resources_.view.get();
  auto info = typed<VkFramebufferCreateInfo>(VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO);
  info.renderPass = device_.renderPassFor(format());
  info.attachmentCount = 1;
  info.pAttachments = &view;
  info.width = size().width;
  info.height = size().height;
  info.layers = 1;
  resources_.framebuffer = created<FramebufferOwner>(vkCreateFramebuffer, device, info, "vkCreateFramebuffer");
}

void VulkanTexture::requireOwnImage() const {
  require(drawable_ == nullptr, "a drawable's texture can't be read or written");
}

VkBufferImageCopy VulkanTexture::wholeImage() const {
  VkBufferImageCopy copy{};
  copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
  copy.imageExtent = {size().width, size().height, 1};
  return copy;
}

const VulkanBuffer& VulkanTexture::staging() const {
  waitForCopy();
  if (!resources_.staging.buffer) {
    resources_.staging =
        device_.context().makeBuffer(byteCount(), VK_BUFFER_USAGE_TRANSFER_SRC_BIT | VK_BUFFER_USAGE_TRANSFER_DST_BIT,
                                     VK_MEMORY_PROPERTY_HOST_CACHED_BIT);
  }
  return resources_.staging;
}

void VulkanTexture::waitForCopy() const {
  device_.timeline().wait(lastCopy_);
}

void VulkanTexture::dropStaging() const {
  if (descriptor().storage == StorageMode::shared) return;
  waitForCopy();
  resources_.staging = {};
}

void VulkanTexture::doWrite(std::span<const std::byte> rows) {
  requireOwnImage();
  const VulkanBuffer& buffer = staging();
  std::memcpy(buffer.bytes.data(), rows.data(), rows.size());
  lastCopy_ = device_.submitOnce([&](VkCommandBuffer commands) {
    const VkBufferImageCopy copy = wholeImage();
    vkCmdCopyBufferToImage(commands, buffer.buffer.get(), image_, VK_IMAGE_LAYOUT_GENERAL, 1, &copy);
  });
  dropStaging();
}

void VulkanTexture::doRead(std::span<std::byte> rows) const {
  requireOwnImage();
  const VulkanBuffer& buffer = staging();
  lastCopy_ = device_.submitOnce([&](VkCommandBuffer commands) {
    const VkBufferImageCopy copy = wholeImage();
    vkCmdCopyImageToBuffer(commands, image_, VK_IMAGE_LAYOUT_GENERAL, buffer.buffer.get(), 1, &copy);
  });
  waitForCopy();
  std::memcpy(rows.data(), buffer.bytes.data(), rows.size());
  dropStaging();
}

}  // namespace veloria::gpu::vulkan
