// A real GPU device that is lost in the middle of drawing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "AppFakes.h"
#include "app/AppDelegate.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "settings/Palette.h"

namespace veloria::tests {
namespace {

/// The pictures that panels have shown, whichever device drew them.
class Pictures {
 public:
  void put(std::span<const std::byte> rows) {
    const std::lock_guard guard(lock_);
    brightest_ = 0;
    for (const std::byte value : rows) brightest_ = std::max(brightest_, std::to_integer<int>(value));
    ++count_;
  }
  int count() const {
    const std::lock_guard guard(lock_);
    return count_;
  }
  int brightest() const {
    const std::lock_guard guard(lock_);
    return brightest_;
  }

 private:
  mutable std::mutex lock_;
  int count_ = 0;
  int brightest_ = 0;
};

class VulkanPanel final : public OverlayPanel {
 public:
  VulkanPanel(gpu::Device& device, Pictures& pictures, std::function<void()>& draw)
      : draw_(draw),
        surface_(gpu::vulkan::makeHostSurface(device, [&](auto rows, gpu::Size) { pictures.put(rows); })) {}

  void setFrame(const Rect& frame, double) override {
    surface_->configure({static_cast<std::uint32_t>(frame.width), static_cast<std::uint32_t>(frame.height)},
                        gpu::PixelFormat::bgra8Unorm);
  }
  void setLevel(OverlayLevel) override {}
  void setPixelFormat(gpu::PixelFormat) override {}
  void setPreferredFramesPerSecond(double) override {}
  void setPaused(bool) override {}
  void setDrawHandler(std::function<void()> handler) override { draw_ = std::move(handler); }
  void orderFront() override {}
  void orderOut() override {}
  gpu::Size drawableSize() const override { return surface_->size(); }
  gpu::PixelFormat colorPixelFormat() const override { return surface_->format(); }
  gpu::Drawable* currentDrawable() override { return surface_->nextDrawable(); }

 private:
  std::function<void()>& draw_;
  std::unique_ptr<gpu::Surface> surface_;
};

class VulkanPanels final : public OverlayPanelFactory {
 public:
  std::unique_ptr<OverlayPanel> makePanel(const Screen&) override {
    return std::make_unique<VulkanPanel>(*device, pictures, draw);
  }
  std::string visibilityHint(const Screen&, OverlayLevel) override { return {}; }

  gpu::Device* device = nullptr;
  Pictures pictures;
  std::function<void()> draw;
};

TEST(LostGpu, theBandIsBackWithItsSettingsAndPalette) {
  SettingsStore settings(std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; });
  NimbraConfig config;
  config.customPalette = Palette::presets().back();
  config.extraHeight = 20;
  settings.setConfig(config);
  FakeScreens screens;
  screens.list = {screenNamed("left", 1, 0)};
  screens.list[0].frame.width = screens.list[0].visibleFrame.width = 320;
  ManualTimers timers;
  VulkanPanels panels;
  SceneDriver driver({.settings = [&]() -> const NimbraConfig& { return settings.config(); }, .timers = &timers});
  std::vector<std::string> alerts;
  int devices = 0;
  AppDelegate delegate({.makeDevice =
                            [&] {
                              ++devices;
                              gpu::vulkan::VulkanOptions options;
                              options.validation = true;
                              auto device = gpu::vulkan::makeVulkanDevice(options);
                              panels.device = device.get();
                              return device;
                            },
                        .shaderLibraries = {VELORIA_SHADER_LIBRARY},
                        .screens = &screens,
                        .panels = &panels,
                        .timers = &timers,
                        .settings = &settings,
                        .driver = &driver,
                        .captureProblem = {},
                        .environment = [](std::string_view) { return std::nullopt; },
                        .backendName = "none",
                        .alert = [&](const std::string&, const std::string& text) { alerts.push_back(text); },
                        .terminate = [] { FAIL(); },
                        .hint = [](const std::string&) {}});
  ASSERT_TRUE(delegate.startGpu());
  delegate.didFinishLaunching();
  const auto drawFrames = [&](int count) {
    for (int i = 0; i < count; ++i) {
      driver.tick();
      panels.draw();
    }
    panels.device->waitIdle();
  };
  drawFrames(40);
  EXPECT_GT(panels.pictures.count(), 0);
  EXPECT_GT(panels.pictures.brightest(), 60);

  gpu::vulkan::simulateLoss(*panels.device);
  const int before = panels.pictures.count();
  panels.draw();
  timers.fire();  // 0.1 s later
  EXPECT_EQ(devices, 2);
  drawFrames(40);
  EXPECT_GT(panels.pictures.count(), before);
  EXPECT_GT(panels.pictures.brightest(), 60);
  EXPECT_EQ(settings.config(), config);
  EXPECT_EQ(delegate.renderers().at(1)->config.customPalette, config.customPalette);
  EXPECT_EQ(gpu::vulkan::validationMessageCount(*panels.device), 0U);
  EXPECT_THAT(alerts, testing::IsEmpty());
}

}  // namespace
}  // namespace veloria::tests
