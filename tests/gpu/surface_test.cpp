#include <volk.h>
#include <xcb/xcb.h>
// After the two above, which it takes for granted.
#include <vulkan/vulkan_xcb.h>

#include <cstdlib>

#include "GpuTest.h"
#include "desktop/DesktopSession.h"
#include "gpu/vulkan/VulkanFactory.h"
#include "platform/linux/x11/X11PictureBuffers.h"

namespace veloria::tests {

const Backend& backend() {
  return vulkanBackend();
}

namespace {

using namespace gpu;

/// With the driver's own way into the window, and with pictures that are copied to memory.
class SurfaceTest : public GpuTest, public testing::WithParamInterface<bool> {
 protected:
  static constexpr Size first{320, 40};

  void SetUp() override {
    if (const std::string missing = DesktopSession::missing(); !missing.empty()) GTEST_SKIP() << missing;
    GpuTest::SetUp();
    desktop_ = std::make_unique<DesktopSession>();
    connection_ = desktop_->observer();
    openWindow();
    surface_ = GetParam() ? vulkan::makeHostSurface(*device_,
                                                    std::make_unique<X11PictureBuffers>(desktop_->display(), window_))
                          : vulkan::makeSurface(*device_, [this](VkInstance instance) { return makeNative(instance); });
    surface_->configure(first, PixelFormat::bgra8Unorm);
  }

  void TearDown() override {
    pipeline_.reset();
    surface_.reset();
    GpuTest::TearDown();
  }

  void openWindow() {
    window_ = xcb_generate_id(connection_);
    const std::uint32_t overrideRedirect = 1;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, desktop_->root(), 0, 0, first.width, first.height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    xcb_map_window(connection_, window_);
    sync();
  }
  void resizeWindow(Size size) {
    const std::array<std::uint32_t, 2> values{size.width, size.height};
    xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    sync();
  }
  void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

  VkSurfaceKHR makeNative(VkInstance instance) {
    ++nativeSurfaces_;
    VkXcbSurfaceCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
    info.connection = connection_;
    info.window = window_;
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    const auto create = vkGetInstanceProcAddr(instance, "vkCreateXcbSurfaceKHR");
    if (window_ == XCB_WINDOW_NONE || create == nullptr) return surface;
    reinterpret_cast<PFN_vkCreateXcbSurfaceKHR>(create)(instance, &info, nullptr, &surface);
    return surface;
  }

  // Asks again and again, as a frame timer would; nullptr after a while.
  Drawable* waitForDrawable() {
    Drawable* drawable = nullptr;
    poll(5, [&] { return (drawable = surface_->nextDrawable()) != nullptr; });
    return drawable;
  }
  void draw(Frame& frame, const Drawable& drawable) {
    const Size size = drawable.texture().size();
    if (pipeline_ == nullptr) pipeline_ = renderPipeline("f_where", drawable.texture().format());
    frame.run({.pipeline = *pipeline_,
               .bytes = floats({static_cast<float>(size.width), static_cast<float>(size.height)}),
               .target = drawable.texture()});
  }
  void present(Drawable& drawable) {
    Frame* frame = queue_->begin("frame");
    draw(*frame, drawable);
    frame->present(drawable);
    frame->commit();
  }
  void presentFrame() {
    Drawable* drawable = waitForDrawable();
    ASSERT_NE(drawable, nullptr);
    present(*drawable);
  }

  // Red grows to the right and green downwards over the whole window; blue is half, as for any target of encoded bytes.
  bool shows(Size size) {
    const Screenshot shot = desktop_->screenshot();
    for (const auto& [x, y] : {std::pair{1U, 1U}, {size.width - 2, 1U}, {1U, size.height - 2}, {size.width / 2, 9U}}) {
      const Pixel pixel = shot.at(static_cast<int>(x), static_cast<int>(y));
      const int red = pixel.red - static_cast<int>((2 * x + 1) * 255 / (2 * size.width));
      const int green = pixel.green - static_cast<int>((2 * y + 1) * 255 / (2 * size.height));
      if (std::max({std::abs(red), std::abs(green), std::abs(pixel.blue - 128)}) > 2) return false;
    }
    return true;
  }
  void expectPicture(Size size) {
    EXPECT_TRUE(poll(5, [&] { return shows(size); }));
  }

  std::unique_ptr<DesktopSession> desktop_;
  xcb_connection_t* connection_ = nullptr;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  std::unique_ptr<Surface> surface_;
  std::shared_ptr<Pipeline> pipeline_;
  int nativeSurfaces_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Ways, SurfaceTest, testing::Bool(),
                         [](const auto& each) { return each.param ? "Copied" : "Native"; });

TEST_P(SurfaceTest, ShowsFramesAsTheyWereDrawn) {
  EXPECT_EQ(surface_->format(), PixelFormat::bgra8Unorm);
  for (int frame = 0; frame < 60; ++frame) presentFrame();
  expectPicture(first);
  EXPECT_LE(nativeSurfaces_, 1);
  vulkan::simulateLoss(*device_);
  EXPECT_EQ(surface_->nextDrawable(), nullptr);
}

TEST_P(SurfaceTest, ADrawableStaysTakenUntilItIsPresented) {
  Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  draw(*queue_->begin("never committed"), *drawable);
  EXPECT_EQ(surface_->nextDrawable(), drawable);
  run([&](Frame& drawnOnly) { draw(drawnOnly, *drawable); });
  EXPECT_EQ(surface_->nextDrawable(), drawable);
  run([&](Frame& presentedOnly) { presentedOnly.present(*drawable); });
  expectPicture(first);
}

TEST_P(SurfaceTest, FollowsTheWindowsSize) {
  surface_->configure({0, 40}, PixelFormat::bgra8Unorm);
  EXPECT_EQ(surface_->nextDrawable(), nullptr) << "nothing to draw into";
  for (std::uint32_t round = 0; round < 40; ++round) {
    const Size size{220 + round * 7, 64 - round % 5 * 9};
    resizeWindow(size);
    surface_->configure(size, PixelFormat::bgra8Unorm);
    presentFrame();
    if (round % 8 == 0) presentFrame();
  }
  const Size last{493, 28};
  presentFrame();
  expectPicture(last);
}

class NativeSurfaceTest : public SurfaceTest {};
INSTANTIATE_TEST_SUITE_P(Ways, NativeSurfaceTest, testing::Values(false), [](const auto&) { return "Native"; });

TEST_P(NativeSurfaceTest, AWindowThatGoesIsMissedAndANewOneFound) {
  presentFrame();
  xcb_destroy_window(connection_, std::exchange(window_, XCB_WINDOW_NONE));
  sync();
  EXPECT_TRUE(poll(5, [&] {
    Drawable* drawable = surface_->nextDrawable();
    if (drawable != nullptr) present(*drawable);
    return drawable == nullptr;
  }));
  const int before = nativeSurfaces_;
  EXPECT_FALSE(poll(1.2, [&] { return surface_->nextDrawable() != nullptr; }));
  EXPECT_EQ(surface_->format(), PixelFormat::invalid);
  EXPECT_LE(nativeSurfaces_ - before, 6) << "tries must grow rarer";
  openWindow();
  presentFrame();
  expectPicture(first);
}

}  // namespace
}  // namespace veloria::tests
