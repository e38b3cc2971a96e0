#include <vulkan/vulkan.h>
#include <xcb/xcb.h>
// After the two above, which it takes for granted.
#include <vulkan/vulkan_xcb.h>

#include <array>
#include <cstdlib>
#include <utility>

#include "GpuTest.h"
#include "desktop/DesktopSession.h"
#include "gpu/vulkan/VulkanFactory.h"

namespace veloria::gpu::test {

namespace {

// A window with (depth 32) or without (24) an alpha channel.
class TestWindow {
 public:
  TestWindow(xcb_connection_t* connection, Size size, std::uint8_t depth)
      : connection_(connection), id_(xcb_generate_id(connection)), depth_(depth) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_visualid_t visual = visualOfDepth(screen, depth);
    const xcb_colormap_t colormap = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, screen->root, visual);
    const std::array<std::uint32_t, 4> values{0, 0, 1, colormap};
    xcb_create_window(connection, depth, id_, screen->root, 0, 0, static_cast<std::uint16_t>(size.width),
                      static_cast<std::uint16_t>(size.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
                      values.data());
    xcb_map_window(connection, id_);
    sync();
  }
  ~TestWindow() { destroy(); }
  TestWindow(const TestWindow&) = delete;
  TestWindow& operator=(const TestWindow&) = delete;

  xcb_window_t id() const { return id_; }

  // What a program does for a driver that can't present; on the completion thread.
  void put(std::span<const std::byte> rows, Size size) {
    const xcb_gcontext_t context = xcb_generate_id(connection_);
    xcb_create_gc(connection_, context, id_, 0, nullptr);
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, id_, context, static_cast<std::uint16_t>(size.width),
                  static_cast<std::uint16_t>(size.height), 0, 0, 0, depth_, static_cast<std::uint32_t>(rows.size()),
                  reinterpret_cast<const std::uint8_t*>(rows.data()));
    xcb_free_gc(connection_, context);
    xcb_flush(connection_);
  }

  void resize(Size size) {
    const std::array<std::uint32_t, 2> values{size.width, size.height};
    xcb_configure_window(connection_, id_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    sync();
  }
  void destroy() {
    if (id_ == XCB_WINDOW_NONE) return;
    xcb_destroy_window(connection_, std::exchange(id_, XCB_WINDOW_NONE));
    sync();
  }

 private:
  static xcb_visualid_t visualOfDepth(const xcb_screen_t* screen, std::uint8_t wanted) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
      if (depth.data->depth == wanted) return xcb_depth_visuals_iterator(depth.data).data->visual_id;
    }
    ADD_FAILURE() << "the X server has no visual of depth " << static_cast<int>(wanted);
    return XCB_NONE;
  }
  void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

  xcb_connection_t* connection_;
  xcb_window_t id_;
  std::uint8_t depth_;
};

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

// How a picture gets into a window.
enum class Way { driver, driverWithAlpha, hostWithAlpha };

void PrintTo(Way way, std::ostream* stream) {
  *stream << std::array{"driver", "driver with alpha", "host with alpha"}[static_cast<std::size_t>(way)];
}

class SurfaceTest : public GpuTest {
 protected:
  static constexpr Size first{320, 40};

  void SetUp() override { start(Way::driver); }

  void start(Way way) {
    if (const std::string missing = desktop::DesktopSession::missing(); !missing.empty()) GTEST_SKIP() << missing;
    GpuTest::SetUp();
    if (way == Way::driverWithAlpha && vulkan::needsHostSurface(*device_)) {
      GTEST_SKIP() << device_->name() << " shows nothing in X11 windows with alpha";
    }
    desktop_ = std::make_unique<desktop::DesktopSession>();
    connection_.reset(xcb_connect(desktop_->display().c_str(), nullptr));
    depth_ = way == Way::driver ? 24 : 32;
    openWindow();
    if (way == Way::hostWithAlpha) {
      surface_ = vulkan::makeHostSurface(*device_, [this](auto rows, Size size) { window_->put(rows, size); });
    } else {
      surface_ = vulkan::makeSurface(*device_, [this](VkInstance instance) { return makeNative(instance); });
    }
    surface_->configure(first, PixelFormat::bgra8Unorm);
  }

  void openWindow() { window_ = std::make_unique<TestWindow>(connection_.get(), first, depth_); }

  void TearDown() override {
    pipeline_.reset();
    surface_.reset();
    GpuTest::TearDown();
    window_.reset();
    connection_.reset();
  }

  VkSurfaceKHR makeNative(VkInstance instance) {
    ++nativeSurfaces_;
    if (window_ == nullptr || window_->id() == XCB_WINDOW_NONE) return VK_NULL_HANDLE;
    VkXcbSurfaceCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
    info.connection = connection_.get();
    info.window = window_->id();
    const auto create =
        reinterpret_cast<PFN_vkCreateXcbSurfaceKHR>(vkGetInstanceProcAddr(instance, "vkCreateXcbSurfaceKHR"));
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    if (create != nullptr) create(instance, &info, nullptr, &surface);
    return surface;
  }

  // Asks again and again, as a frame timer would; nullptr after a while.
  Drawable* waitForDrawable(double seconds = 5) {
    Drawable* drawable = nullptr;
    desktop::poll(seconds, [&] { return (drawable = surface_->nextDrawable()) != nullptr; });
    return drawable;
  }

  void draw(Frame& frame, const Drawable& drawable) {
    const Size size = drawable.texture().size();
    if (pipeline_ == nullptr) pipeline_ = renderPipeline("f_where", drawable.texture().format());
    frame.run({.pipeline = *pipeline_,
               .bytes = floats({static_cast<float>(size.width), static_cast<float>(size.height)}),
               .target = drawable.texture()});
  }

  void presentFrame() {
    Drawable* drawable = waitForDrawable();
    ASSERT_NE(drawable, nullptr);
    Frame* frame = queue_->begin("frame");
    draw(*frame, *drawable);
    frame->present(*drawable);
    frame->commit();
  }

  // Red grows to the right and green downwards over the whole window; blue is half, as for any target of encoded bytes.
  bool showsThePicture(Size size) {
    const desktop::Screenshot shot = desktop_->screenshot();
    const auto near = [](int value, int expected) { return std::abs(value - expected) <= 2; };
    for (const auto& [x, y] : {std::pair{1U, 1U}, {size.width - 2, 1U}, {1U, size.height - 2}, {size.width / 2, 9U}}) {
      const desktop::Pixel pixel = shot.at(static_cast<int>(x), static_cast<int>(y));
      const int red = static_cast<int>((2 * x + 1) * 255 / (2 * size.width));
      const int green = static_cast<int>((2 * y + 1) * 255 / (2 * size.height));
      if (!near(pixel.red, red) || !near(pixel.green, green) || !near(pixel.blue, 128)) return false;
    }
    return true;
  }

  std::unique_ptr<desktop::DesktopSession> desktop_;
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  std::unique_ptr<TestWindow> window_;
  std::unique_ptr<Surface> surface_;
  std::shared_ptr<Pipeline> pipeline_;
  int nativeSurfaces_ = 0;
  std::uint8_t depth_ = 24;
};

class EverySurfaceTest : public SurfaceTest, public ::testing::WithParamInterface<Way> {
 protected:
  void SetUp() override { start(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Ways, EverySurfaceTest,
                         ::testing::Values(Way::driver, Way::driverWithAlpha, Way::hostWithAlpha));

TEST_P(EverySurfaceTest, ShowsFramesAsTheyWereDrawn) {
  EXPECT_EQ(surface_->format(), PixelFormat::bgra8Unorm);
  for (int frame = 0; frame < 60; ++frame) presentFrame();
  device_->waitIdle();
  EXPECT_TRUE(desktop::poll(5, [&] { return showsThePicture(first); }));
  EXPECT_LE(nativeSurfaces_, 1);
}

TEST_P(EverySurfaceTest, ExtendedRangeFallsBackWhereItIsNotOffered) {
  surface_->configure(first, PixelFormat::rgba16Float);
  const PixelFormat format = surface_->format();
  EXPECT_TRUE(format == PixelFormat::bgra8Unorm || format == PixelFormat::rgba16Float) << pixelFormatName(format);
  const Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  EXPECT_EQ(drawable->texture().format(), format);
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
  EXPECT_TRUE(desktop::poll(5, [&] { return showsThePicture(first); }));
}

TEST_P(EverySurfaceTest, FollowsTheWindowsSize) {
  for (int round = 0; round < 40; ++round) {
    const Size size{200U + static_cast<std::uint32_t>(round) * 7U, 20U + static_cast<std::uint32_t>(round % 5) * 9U};
    window_->resize(size);
    surface_->configure(size, PixelFormat::bgra8Unorm);
    presentFrame();
    if (round % 8 == 0) presentFrame();
  }
  const Size last{500, 64};
  window_->resize(last);
  surface_->configure(last, PixelFormat::bgra8Unorm);
  presentFrame();
  ASSERT_NE(waitForDrawable(), nullptr);
  EXPECT_EQ(waitForDrawable()->texture().size(), last);
  EXPECT_TRUE(desktop::poll(5, [&] { return showsThePicture(last); }));
}

TEST_F(SurfaceTest, FollowsAWindowThatIsLate) {
  presentFrame();
  surface_->configure({111, 22}, PixelFormat::bgra8Unorm);
  presentFrame();
  window_->resize({111, 22});
  EXPECT_TRUE(desktop::poll(5, [&] {
    presentFrame();
    const Drawable* drawable = surface_->nextDrawable();
    return drawable != nullptr && drawable->texture().size() == Size{111, 22};
  }));
}

TEST_P(EverySurfaceTest, NothingIsDrawnAtSizeZero) {
  surface_->configure({0, 40}, PixelFormat::bgra8Unorm);
  EXPECT_EQ(surface_->nextDrawable(), nullptr);
  surface_->configure(first, PixelFormat::bgra8Unorm);
  EXPECT_NE(waitForDrawable(), nullptr);
}

TEST_F(SurfaceTest, AWindowThatGoesIsMissedAndANewOneFound) {
  presentFrame();
  window_->destroy();
  EXPECT_TRUE(desktop::poll(5, [&] {
    Drawable* drawable = surface_->nextDrawable();
    if (drawable == nullptr) return true;
    run([&](Frame& frame) {
      draw(frame, *drawable);
      frame.present(*drawable);
    });
    return false;
  }));
  const int before = nativeSurfaces_;
  EXPECT_FALSE(desktop::poll(1.2, [&] { return surface_->nextDrawable() != nullptr; }));
  EXPECT_EQ(surface_->format(), PixelFormat::invalid);
  EXPECT_LE(nativeSurfaces_ - before, 6) << "tries must grow rarer";

  openWindow();
  presentFrame();
  device_->waitIdle();
  EXPECT_TRUE(desktop::poll(5, [&] { return showsThePicture(first); }));
}

TEST_F(SurfaceTest, AServerThatGoesIsSurvived) {
  presentFrame();
  Drawable* drawable = waitForDrawable();
  ASSERT_NE(drawable, nullptr);
  desktop_->stopServer();
  run([&](Frame& frame) {
    draw(frame, *drawable);
    frame.present(*drawable);
  });
  EXPECT_TRUE(desktop::poll(5, [&] { return surface_->nextDrawable() == nullptr; }));
  EXPECT_FALSE(device_->lost());
}

TEST_P(EverySurfaceTest, ALostDeviceHasNoDrawables) {
  presentFrame();
  vulkan::simulateLoss(*device_);
  EXPECT_EQ(surface_->nextDrawable(), nullptr);
}

}  // namespace

}  // namespace veloria::gpu::test
