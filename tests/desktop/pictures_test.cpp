// Pictures from memory in windows of real display servers: what is seen, and what happens without the server.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include "desktop/DesktopSession.h"
#include "desktop/SwaySession.h"
#include "platform/linux/wayland/WaylandBand.h"
#include "platform/linux/wayland/WaylandPictureBuffers.h"
#include "platform/linux/x11/X11PictureBuffers.h"
#include "platform/qt/QtEventLoop.h"

namespace veloria::tests {
namespace {

constexpr gpu::Size strip{640, 30};
constexpr gpu::Size screen{1920, 1080};

// Every pixel is another one than its neighbours and than those of another `seed`.
Pixel colorAt(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  return {static_cast<std::uint8_t>(x * 3 + seed), static_cast<std::uint8_t>(y * 5 + x / 85),
          static_cast<std::uint8_t>(seed)};
}

void fill(const gpu::PictureBuffer& picture, std::uint32_t seed) {
  for (std::uint32_t y = 0; y < picture.size.height; ++y) {
    for (std::uint32_t x = 0; x < picture.size.width; ++x) {
      const Pixel color = colorAt(x, y, seed);
      std::byte* pixel = picture.pixels + y * picture.rowBytes + x * 4;
      pixel[0] = std::byte{color.blue};
      pixel[1] = std::byte{color.green};
      pixel[2] = std::byte{color.red};
      pixel[3] = std::byte{255};
    }
  }
}

bool shows(const Screenshot& shot, gpu::Size size, std::uint32_t seed) {
  for (std::uint32_t y = 0; y < size.height; ++y) {
    for (std::uint32_t x = 0; x < size.width; ++x) {
      if (shot.at(static_cast<int>(x), static_cast<int>(y)) != colorAt(x, y, seed)) return false;
    }
  }
  return true;
}

/// Pictures of one window on a desktop.
class Pictures : public testing::Test {
 protected:
  gpu::PictureBuffer* acquire(gpu::Size size) {
    gpu::PictureBuffer* picture = nullptr;
    session().waitUntil([&] { return (picture = buffers_->acquire(size)) != nullptr; }, 5);
    return picture;
  }
  /// On another thread than acquire(), as a device does it.
  void show(gpu::PictureBuffer& picture) {
    std::jthread([&] { buffers_->show(picture); });
  }
  void expectPicture(gpu::Size size, std::uint32_t seed) {
    gpu::PictureBuffer* picture = acquire(size);
    ASSERT_NE(picture, nullptr);
    fill(*picture, seed);
    show(*picture);
    EXPECT_TRUE(session().waitUntil([&] { return shows(session().screenshot(), size, seed); }, 5)) << seed;
  }
  /// As many as there are, when nothing is on its way.
  std::size_t countFree(gpu::Size size) {
    std::vector<gpu::PictureBuffer*> all;
    while (gpu::PictureBuffer* picture = buffers_->acquire(size)) all.push_back(picture);
    for (gpu::PictureBuffer* picture : all) buffers_->giveBack(*picture);
    return all.size();
  }
  bool endsWithNone(gpu::Size size) {
    return session().waitUntil(
        [&] {
          gpu::PictureBuffer* picture = buffers_->acquire(size);
          if (picture != nullptr) show(*picture);
          return picture == nullptr;
        },
        5);
  }
  virtual Session& session() = 0;

  std::unique_ptr<gpu::PictureBuffers> buffers_;
};

/// With arguments for the server, in windows with alpha and without.
class X11Pictures : public Pictures,
                    public testing::WithParamInterface<std::tuple<std::vector<std::string>, std::uint8_t>> {
 protected:
  void SetUp() override {
    if (const auto missing = DesktopSession::missing(); !missing.empty()) GTEST_SKIP() << missing;
    std::signal(SIGPIPE, SIG_DFL);  // a server that ends must not end us
    desktop_ = std::make_unique<DesktopSession>(DesktopSession::Options{.serverArguments = std::get<0>(GetParam())});
    openWindow();
    buffers_ = std::make_unique<X11PictureBuffers>(desktop_->display(), window_);
  }
  Session& session() override { return *desktop_; }

  void openWindow() {
    auto* connection = desktop_->observer();
    const xcb_screen_t& root = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const std::uint8_t depth = std::get<1>(GetParam());
    auto depths = xcb_screen_allowed_depths_iterator(&root);
    while (depths.data->depth != depth) xcb_depth_next(&depths);
    const xcb_visualid_t visual = xcb_depth_visuals(depths.data)->visual_id;
    const xcb_colormap_t colormap = xcb_generate_id(connection);
    xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap, root.root, visual);
    window_ = xcb_generate_id(connection);
    const std::uint32_t values[] = {0, 0, 1, colormap};
    xcb_create_window(connection, depth, window_, root.root, 0, 0, strip.width, strip.height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP, values);
    xcb_map_window(connection, window_);
    desktop_->windows();  // waits for the server
  }
  void resizeWindow(gpu::Size size) {
    const std::uint32_t values[] = {size.width, size.height};
    xcb_configure_window(desktop_->observer(), window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    desktop_->windows();
  }

  std::unique_ptr<DesktopSession> desktop_;
  xcb_window_t window_ = XCB_WINDOW_NONE;
};

// The last one has to get a large picture in pieces.
INSTANTIATE_TEST_SUITE_P(
    Servers, X11Pictures,
    testing::Combine(testing::Values(std::vector<std::string>{},
                                     std::vector<std::string>{"-extension", "MIT-SHM", "-maxbigreqsize", "1"}),
                     testing::Values(std::uint8_t{24}, std::uint8_t{32})),
    [](const auto& each) {
      return (std::get<0>(each.param).empty() ? "Shared" : "Sent") + std::to_string(std::get<1>(each.param));
    });

TEST_P(X11Pictures, AreSeenInEverySizeAndComeBackUntilTheWindowGoes) {
  expectPicture(strip, 40);
  expectPicture(strip, 90);
  EXPECT_TRUE(session().waitUntil([&] { return countFree(strip) == 2; }, 5));
  gpu::PictureBuffer* ofOldSize = acquire(strip);
  resizeWindow(screen);
  expectPicture(screen, 70);
  gpu::PictureBuffer* second = acquire(screen);
  EXPECT_EQ(buffers_->acquire(screen), nullptr) << "there are two";
  for (gpu::PictureBuffer* picture : {ofOldSize, second}) buffers_->giveBack(*picture);
  expectPicture(screen, 170);
  EXPECT_TRUE(session().waitUntil([&] { return countFree(screen) == 2; }, 5));
  for (const gpu::Size none : {gpu::Size{0, 9}, {9, 0}, {9, 100000}}) EXPECT_EQ(buffers_->acquire(none), nullptr);
  xcb_destroy_window(desktop_->observer(), window_);
  desktop_->windows();
  EXPECT_TRUE(endsWithNone(screen));
  EXPECT_EQ(X11PictureBuffers(desktop_->display(), window_).acquire(strip), nullptr) << "it was gone before";
}

TEST_P(X11Pictures, NobodyWaitsForAServerThatHangsOrHasEnded) {
  expectPicture(strip, 40);
  const bool hasExtension = std::get<0>(GetParam()).empty();
  EXPECT_EQ(static_cast<X11PictureBuffers&>(*buffers_).usesSharedMemory(), hasExtension);
  desktop_->signal(SIGSTOP);
  for (int i = 0; i < 2; ++i) {
    gpu::PictureBuffer* picture = buffers_->acquire(screen);
    ASSERT_NE(picture, nullptr) << i;
    show(*picture);
  }
  EXPECT_EQ(buffers_->acquire(screen), nullptr) << "it has them all";
  if (std::get<1>(GetParam()) == 24) {
    buffers_.reset();
    return desktop_->signal(SIGCONT);
  }
  desktop_->signal(SIGKILL);
  EXPECT_TRUE(endsWithNone(screen));
}

/// Draws on a thread of its own, for longer than the display shows a frame; every other picture is not shown at all.
class SlowSurface final : public gpu::Surface {
 public:
  struct Counts {
    std::atomic<int> drawn = 0;
    int tooEarly = 0;  ///< asked for a frame while one was being drawn
  };
  SlowSurface(std::unique_ptr<gpu::PictureBuffers> buffers, Counts& counts)
      : buffers_(std::move(buffers)), counts_(counts) {}
  ~SlowSurface() override { finish(); }
  void configure(gpu::Size size, gpu::PixelFormat) override { size_ = size; }
  gpu::PixelFormat format() const override { return gpu::PixelFormat::bgra8Unorm; }
  gpu::Size size() const override { return size_; }
  gpu::Drawable* nextDrawable() override {
    if (drawing_) ++counts_.tooEarly;
    finish();
    gpu::PictureBuffer* picture = buffers_->acquire(size_);
    if (picture == nullptr) return nullptr;
    drawing_ = true;
    device_ = std::thread([this, picture] {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      fill(*picture, 33);
      drawing_ = false;
      return ++counts_.drawn % 2 == 0 ? buffers_->giveBack(*picture) : buffers_->show(*picture);
    });
    return &drawable_;
  }

 private:
  void finish() {
    if (device_.joinable()) device_.join();
  }

  std::unique_ptr<gpu::PictureBuffers> buffers_;
  Counts& counts_;
  gpu::Size size_;
  std::atomic<bool> drawing_ = false;
  std::thread device_;
  gpu::OffscreenDrawable drawable_{nullptr};
};

class WaylandPictures : public Pictures {
 protected:
  void SetUp() override {
    if (const auto missing = SwaySession::missing(); !missing.empty()) GTEST_SKIP() << missing;
    sway_ = std::make_unique<SwaySession>(
        SwaySession::Options{.configuration = "output HEADLESS-1 resolution 1920x1080\n"});
    sway_->setIdle([] { QCoreApplication::processEvents(); });
    connection_ =
        std::make_unique<WaylandConnection>(sway_->environment().at("WAYLAND_DISPLAY"), watchDescriptor, timers_);
  }
  Session& session() override { return *sway_; }

  std::unique_ptr<LayerSurface> openLayer(gpu::Size size) {
    const LayerPlacement place{.layer = ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY,
                               .anchors = ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT,
                               .width = size.width,
                               .height = size.height,
                               .exclusiveZone = -1};
    auto layer = std::make_unique<LayerSurface>(
        *connection_, connection_->outputs().at(0)->raw(), place,
        LayerSurface::Handlers{[this](std::uint32_t, std::uint32_t) { configured_ = true; }, [] {}});
    EXPECT_TRUE(sway_->waitUntil([&] { return configured_; }));
    return layer;
  }

  int argumentCount_ = 0;
  QCoreApplication application_{argumentCount_, nullptr};
  QtTimerFactory timers_;
  std::unique_ptr<SwaySession> sway_;
  std::unique_ptr<WaylandConnection> connection_;
  bool configured_ = false;
};

TEST_F(WaylandPictures, AreSeenInEverySizeAndComeBackUntilTheCompositorEnds) {
  const auto layer = openLayer(strip);
  buffers_ = std::make_unique<WaylandPictureBuffers>(*connection_, layer->surface());
  expectPicture(strip, 40);
  expectPicture(strip, 90);
  EXPECT_TRUE(session().waitUntil([&] { return countFree(strip) == 2; }, 5)) << "the third one is seen";
  expectPicture(screen, 70);
  expectPicture(screen, 170);
  EXPECT_TRUE(session().waitUntil([&] { return countFree(screen) == 2; }, 5));
  sway_->signal(SIGKILL);
  EXPECT_TRUE(endsWithNone(screen));
  buffers_.reset();
}

TEST_F(WaylandPictures, ABandWaitsForThemAndGoesOnWithoutThem) {
  WaylandScreenProvider screens(
      *connection_, [](auto) { return std::nullopt; }, ScreenOverrides{});
  SlowSurface::Counts counts;
  WaylandBandFactory factory(*connection_, screens, LayerStacking::newestLowest, [&](auto*, wl_surface* surface) {
    return std::make_unique<SlowSurface>(std::make_unique<WaylandPictureBuffers>(*connection_, surface), counts);
  });
  const Screen on = screens.screens().at(0);
  const auto band = factory.makePanel(on);
  band->setFrame({on.frame.x, on.frame.maxY() - strip.height, on.frame.width, strip.height}, on.backingScale);
  band->setDrawHandler([&] { band->currentDrawable(); });
  band->setPaused(false);
  band->orderFront();
  const gpu::Size whole{screen.width, strip.height};
  EXPECT_TRUE(session().waitUntil([&] { return shows(session().screenshot(), whole, 33); }, 10));
  EXPECT_TRUE(session().waitUntil([&] { return counts.drawn > 10; }, 10));
  EXPECT_LE(counts.tooEarly, 2) << "of " << counts.drawn;
}

}  // namespace
}  // namespace veloria::tests
