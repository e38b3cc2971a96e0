#include <vulkan/vulkan.h>
#include <xcb/xcb.h>
// After the two above, which it takes for granted.
#include <vulkan/vulkan_xcb.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "GpuTest.h"
#include "desktop/DesktopSession.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::tests {

namespace {

using namespace gpu;

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

// Who puts pictures into the window; a window that the host serves has an alpha channel.
enum class Way { driver, host };

class SurfaceTest : public GpuTest {
 protected:
  static constexpr Size first{320, 40};

  void SetUp() override { start(Way::driver); }

  void start(Way way) {
    if (const std::string missing = DesktopSession::missing(); !missing.empty()) GTEST_SKIP() << missing;
    GpuTest::SetUp();
    desktop_ = std::make_unique<DesktopSession>();
    owned_.reset(xcb_connect(desktop_->display().c_str(), nullptr));
    connection_ = owned_.get();
    depth_ = way == Way::driver ? 24 : 32;
    openWindow();
    if (way == Way::host) {
      surface_ = vulkan::makeHostSurface(*device_, [this](auto rows, Size size) { put(rows, size); });
    } else {
      surface_ = vulkan::makeSurface(*device_, [this](VkInstance instance) { return makeNative(instance); });
    }
    surface_->configure(first, PixelFormat::bgra8Unorm);
  }

  void TearDown() override {
    pipeline_.reset();
    surface_.reset();
    GpuTest::TearDown();
    owned_.reset();
  }

  void openWindow() {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    auto depth = xcb_screen_allowed_depths_iterator(screen);
    while (depth.rem > 1 && depth.data->depth != depth_) xcb_depth_next(&depth);
    const xcb_visualid_t visual = xcb_depth_visuals_iterator(depth.data).data->visual_id;
    const xcb_colormap_t colormap = xcb_generate_id(connection_);
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap, screen->root, visual);
    const std::array<std::uint32_t, 4> values{0, 0, 1, colormap};
    window_ = xcb_generate_id(connection_);
    xcb_create_window(
        connection_, depth_, window_, screen->root, 0, 0, first.width, first.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        visual, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values.data());
    xcb_map_window(connection_, window_);
    sync();
  }
  void resizeWindow(Size size) {
    const std::array<std::uint32_t, 2> values{size.width, size.height};
    xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    sync();
  }
  void closeWindow() {
    xcb_destroy_window(connection_, std::exchange(window_, XCB_WINDOW_NONE));
    sync();
  }
  void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

  // What a program does for a driver that can't present; on the completion thread.
  void put(std::span<const std::byte> rows, Size size) {
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context, window_, 0, nullptr);
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context, static_cast<std::uint16_t>(size.width),
                  static_cast<std::uint16_t>(size.height), 0, 0, 0, depth_, static_cast<std::uint32_t>(rows.size()),
                  reinterpret_cast<const std::uint8_t*>(rows.data()));
    xcb_free_gc(connection_, context);
    xcb_flush(connection_);
  }

  VkSurfaceKHR makeNative(VkInstance instance) {
    ++nativeSurfaces_;
    if (window_ == XCB_WINDOW_NONE) return VK_NULL_HANDLE;
    VkXcbSurfaceCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
    info.connection = connection_;
    info.window = window_;
    const auto create =
        reinterpret_cast<PFN_vkCreateXcbSurfaceKHR>(vkGetInstanceProcAddr(instance, "vkCreateXcbSurfaceKHR"));
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    if (create != nullptr) create(instance, &info, nullptr, &surface);
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

  void resize(Size size) {
    resizeWindow(size);
    surface_->configure(size, PixelFormat::bgra8Unorm);
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
  std::unique_ptr<xcb_connection_t, Disconnect> owned_;
  xcb_connection_t* connection_ = nullptr;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  std::unique_ptr<Surface> surface_;
  std::shared_ptr<Pipeline> pipeline_;
  int nativeSurfaces_ = 0;
  std::uint8_t depth_ = 24;
};

class EverySurfaceTest : public SurfaceTest, public testing::WithParamInterface<Way> {
 protected:
  void SetUp() override { start(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Ways, EverySurfaceTest, testing::Values(Way::driver, Way::host));

TEST_P(EverySurfaceTest, ShowsFramesAsTheyWereDrawn) {
  EXPECT_EQ(surface_->format(), PixelFormat::bgra8Unorm);
  for (int frame = 0; frame < 60; ++frame) presentFrame();
  device_->waitIdle();
  expectPicture(first);
  EXPECT_LE(nativeSurfaces_, 1);

  vulkan::simulateLoss(*device_);
  EXPECT_EQ(surface_->nextDrawable(), nullptr);
}

TEST_P(EverySurfaceTest, ADrawableStaysTakenUntilItIsPresented) {
  Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  EXPECT_EQ(surface_->nextDrawable(), drawable);
  draw(*queue_->begin("never committed"), *drawable);
  EXPECT_EQ(surface_->nextDrawable(), drawable);
  run([&](Frame& drawnOnly) { draw(drawnOnly, *drawable); });
  EXPECT_EQ(surface_->nextDrawable(), drawable);
  run([&](Frame& presentedOnly) { presentedOnly.present(*drawable); });
  expectPicture(first);
}

TEST_P(EverySurfaceTest, FollowsTheWindowsSizeAndFormat) {
  surface_->configure({0, 40}, PixelFormat::bgra8Unorm);
  EXPECT_EQ(surface_->nextDrawable(), nullptr) << "nothing to draw into";
  for (std::uint32_t round = 0; round < 40; ++round) {
    resize({200 + round * 7, 20 + round % 5 * 9});
    presentFrame();
    if (round % 8 == 0) presentFrame();
  }
  const Size last{500, 64};
  resize(last);
  presentFrame();
  const Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  EXPECT_EQ(drawable->texture().size(), last);
  expectPicture(last);

  surface_->configure(last, PixelFormat::rgba16Float);  // extended range, where it is offered
  const PixelFormat format = surface_->format();
  EXPECT_TRUE(format == PixelFormat::bgra8Unorm || format == PixelFormat::rgba16Float) << pixelFormatName(format);
  drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  EXPECT_EQ(drawable->texture().format(), format);
}

TEST_F(SurfaceTest, FollowsAWindowThatIsLate) {
  presentFrame();
  surface_->configure({111, 22}, PixelFormat::bgra8Unorm);
  presentFrame();
  resizeWindow({111, 22});
  EXPECT_TRUE(poll(5, [&] {
    presentFrame();
    const Drawable* drawable = surface_->nextDrawable();
    return drawable != nullptr && drawable->texture().size() == Size{111, 22};
  }));
}

TEST_F(SurfaceTest, AWindowThatGoesIsMissedAndANewOneFound) {
  presentFrame();
  closeWindow();
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
  device_->waitIdle();
  expectPicture(first);
}

TEST_F(SurfaceTest, AServerThatGoesIsSurvived) {
  presentFrame();
  Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  desktop_->stopServer();
  present(*drawable);
  device_->waitIdle();
  EXPECT_TRUE(poll(5, [&] { return surface_->nextDrawable() == nullptr; }));
  EXPECT_FALSE(device_->lost());
}

}  // namespace

}  // namespace veloria::tests
