// The delegate on invented screens and panels: what is built, rebuilt and left alone.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "AppFakes.h"
#include "app/AppDelegate.h"
#include "gpu/recording/RecordingDevice.h"
#include "render/RendererError.h"
#include "settings/LookPreset.h"

namespace veloria::tests {
namespace {

using gpu::recording::RecordingDevice;
using gpu::recording::RecordingSurface;

const std::set<std::string> allFunctions{
    "k_advect_velocity", "k_curl",       "k_forces", "k_divergence", "k_jacobi", "k_project", "k_advect_dye",
    "k_clear",           "v_fullscreen", "f_nimbra", "f_down",       "f_blur",   "f_final"};

struct PanelState {
  std::string screen;
  Rect frame;
  double scale = 0;
  OverlayLevel level = OverlayLevel::desktop;
  gpu::PixelFormat format = gpu::PixelFormat::invalid;
  double rate = 0;
  bool paused = true;
  bool shown = false;
  bool gone = false;
  int frames = 0;  ///< how often setFrame was called
  std::function<void()> draw;
};

class FakePanel final : public OverlayPanel {
 public:
  FakePanel(std::shared_ptr<PanelState> state, gpu::Device& device)
      : state_(std::move(state)), surface_(dynamic_cast<RecordingDevice&>(device)) {}
  ~FakePanel() override { state_->gone = true; }

  void setFrame(const Rect& frame, double scale) override {
    state_->frame = frame;
    state_->scale = scale;
    ++state_->frames;
    configure();
  }
  void setLevel(OverlayLevel level) override { state_->level = level; }
  void setPixelFormat(gpu::PixelFormat wanted) override {
    state_->format = wanted;
    configure();
  }
  void setPreferredFramesPerSecond(double rate) override { state_->rate = rate; }
  void setPaused(bool paused) override { state_->paused = paused; }
  void setDrawHandler(std::function<void()> handler) override { state_->draw = std::move(handler); }
  void orderFront() override { state_->shown = true; }
  void orderOut() override { state_->shown = false; }
  gpu::Size drawableSize() const override { return surface_.size(); }
  gpu::PixelFormat colorPixelFormat() const override { return surface_.format(); }
  gpu::Drawable* currentDrawable() override { return surface_.nextDrawable(); }

 private:
  void configure() {
    surface_.configure({static_cast<std::uint32_t>(state_->frame.width * state_->scale),
                        static_cast<std::uint32_t>(state_->frame.height * state_->scale)},
                       state_->format);
  }
  std::shared_ptr<PanelState> state_;
  RecordingSurface surface_;
};

class FakePanels final : public OverlayPanelFactory {
 public:
  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override {
    if (screen.name == refused) throw std::runtime_error("no window for this one");
    made.push_back(std::make_shared<PanelState>());
    made.back()->screen = screen.name;
    return std::make_unique<FakePanel>(made.back(), **device);
  }
  std::string visibilityHint(const Screen&, OverlayLevel level) override {
    return level == OverlayLevel::desktop ? hint : "";
  }

  std::shared_ptr<PanelState> live(const std::string& screen) const {
    for (auto it = made.rbegin(); it != made.rend(); ++it) {
      if ((*it)->screen == screen && !(*it)->gone) return *it;
    }
    return nullptr;
  }

  gpu::Device** device = nullptr;
  std::vector<std::shared_ptr<PanelState>> made;
  std::string hint;
  std::string refused;  ///< the screen that gets no panel
};

class AppTest : public testing::Test {
 protected:
  AppTest() : settings_(std::make_unique<MemoryStorage>(), [](std::string_view) { return std::nullopt; }) {
    libraryPath_ = std::filesystem::temp_directory_path() / ("veloria-app-test-" + std::to_string(::getpid()) + ".spv");
    std::ofstream(libraryPath_) << "any bytes will do for the recording device";
    screens_.list = {left_, right_};
    panels_.device = &device_;
  }
  ~AppTest() override { std::filesystem::remove(libraryPath_); }

  AppServices services() {
    return {
        .makeDevice = [this]() -> std::unique_ptr<gpu::Device> {
          if (devicesLeft_-- <= 0) throw gpu::NoDeviceError("there is no GPU");
          auto device = std::make_unique<RecordingDevice>(allFunctions);
          device_ = device.get();
          return device;
        },
        .shaderLibraries = {libraryPath_},
        .screens = &screens_,
        .panels = &panels_,
        .timers = &timers_,
        .settings = &settings_,
        .driver = &driver_,
        .captureProblem = "nobody can see the panel",
        .environment = [](std::string_view) { return std::nullopt; },
        .backendName = "none",
        .alert = [this](const std::string& title, const std::string& text) { alerts_.push_back(title + "|" + text); },
        .terminate = [this] { ++terminations_; },
        .hint = [this](const std::string& text) { hints_.push_back(text); }};
  }

  static void launch(AppDelegate& delegate) {
    ASSERT_TRUE(delegate.startGpu());
    delegate.didFinishLaunching();
  }

  void change(const std::function<void(NimbraConfig&)>& edit) {
    NimbraConfig config = settings_.config();
    edit(config);
    settings_.setConfig(config);
  }

  const Screen left_ = screenNamed("left", 1, 0);
  const Screen right_ = screenNamed("right", 2, 1920);
  std::filesystem::path libraryPath_;
  gpu::Device* device_ = nullptr;
  int devicesLeft_ = 1000;
  FakeScreens screens_;
  FakePanels panels_;
  ManualTimers timers_;
  SettingsStore settings_;
  SceneDriver driver_{{.settings = [this]() -> const NimbraConfig& { return settings_.config(); },
                       .mediaClock = mediaTime,
                       .wallClock = [] { return 0.0; },
                       .timers = &timers_}};
  std::vector<std::string> alerts_;
  int terminations_ = 0;
  std::vector<std::string> hints_;
};

TEST_F(AppTest, oneBandOnTheFirstScreenAndMoreWhenAskedFor) {
  AppDelegate delegate(services());
  launch(delegate);
  ASSERT_EQ(delegate.windowCount(), 1U);
  const auto first = panels_.live("left");
  EXPECT_EQ(first->frame, (Rect{0, 1048, 1920, 32}));
  EXPECT_TRUE(first->shown);
  EXPECT_FALSE(first->paused);
  EXPECT_EQ(first->rate, 60);
  EXPECT_EQ(first->format, gpu::PixelFormat::rgba16Float);

  change([](NimbraConfig& config) { config.allDisplays = true; });
  EXPECT_EQ(delegate.windowCount(), 2U);
  EXPECT_EQ(panels_.live("left"), first) << "kept, not made again";
  EXPECT_EQ(panels_.live("right")->frame, (Rect{1920, 1048, 1920, 32}));

  screens_.change({right_});
  EXPECT_EQ(delegate.windowCount(), 1U);
  EXPECT_TRUE(first->gone);
  screens_.change({});
  EXPECT_EQ(delegate.windowCount(), 0U);
  screens_.change({left_, right_});
  EXPECT_EQ(delegate.windowCount(), 2U);
  EXPECT_TRUE(panels_.live("left")->shown);
  const Rect place = std::exchange(panels_.live("left")->frame, Rect{});
  screens_.change({left_, right_});
  EXPECT_EQ(panels_.live("left")->frame, place) << "put back where the system had moved it";
}

TEST_F(AppTest, aScreenThatCanHaveNoBandDoesNotCostTheOthersTheirs) {
  change([](NimbraConfig& config) { config.allDisplays = true; });
  panels_.refused = "left";
  AppDelegate delegate(services());
  testing::internal::CaptureStderr();
  launch(delegate);
  EXPECT_TRUE(
      testing::internal::GetCapturedStderr().starts_with("Veloria: renderer init failed: no window for this one\n"));
  EXPECT_EQ(delegate.windowCount(), 1U);
  EXPECT_TRUE(panels_.live("right")->shown);
}

TEST_F(AppTest, eachChangeDoesTheSmallestWork) {
  const NimbraConfig base;
  EXPECT_EQ(planChange(std::nullopt, base), (ChangePlan{true, true, true}));
  const std::pair<std::function<void(NimbraConfig&)>, ChangePlan> table[] = {
      {[](auto& c) { c.exposure = 3; }, {}},
      {[](auto& c) { c.pauseOnBattery = true; }, {}},
      {[](auto& c) { c.fadeSide = 0.5; }, {}},
      {[](auto& c) { c.visualizer = Visualizer::music; }, {true, false, false}},
      {[](auto& c) { c.customScript = "x"; }, {true, false, false}},
      {[](auto& c) { c.matchWallpaper = true; }, {true, false, false}},
      {[](auto& c) { c.enabled = false; }, {true, false, false}},
      {[](auto& c) { c.allDisplays = true; }, {false, true, false}},
      {[](auto& c) { c.layerMode = LayerMode::desktopFull; }, {false, true, false}},
      {[](auto& c) { c.extraHeight = 9; }, {false, true, false}},
      {[](auto& c) { c.notchMode = NotchMode::halo; }, {false, true, false}},
      {[](auto& c) { c.notchPadding = 9; }, {false, true, false}},
      {[](auto& c) { c.hdrGlow = false; }, {false, true, false}},
      {[](auto& c) { c.framesPerSecond = 30; }, {false, true, false}},
      {[](auto& c) { c.quality = 0.5; }, {false, false, true}},
      {[](auto& c) { c.verticalStretch = 1; }, {false, false, true}},
  };
  for (const auto& [edit, expected] : table) {
    NimbraConfig changed = base;
    edit(changed);
    EXPECT_EQ(planChange(base, changed), expected) << &edit - &table[0].first;
  }
}

TEST_F(AppTest, settingsReachThePanelAndTheRenderer) {
  AppDelegate delegate(services());
  launch(delegate);
  const auto panel = panels_.live("left");
  const int placed = panel->frames;
  change([](NimbraConfig& config) { config.exposure = 3; });
  EXPECT_EQ(panel->frames, placed);
  driver_.tick();
  EXPECT_EQ(delegate.renderers().at(1)->config.exposure, 3);
  change([](NimbraConfig& config) {
    config.visualizer = Visualizer::script;
    config.customScript = "set nothing 1";
  });
  EXPECT_TRUE(delegate.status().scriptError) << "the new mode's script runs at once";

  change([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.extraHeight = 20;
    config.hdrGlow = false;
    config.framesPerSecond = 0;
  });
  EXPECT_EQ(panel->level, OverlayLevel::aboveMenuBar);
  EXPECT_EQ(panel->frame, (Rect{0, 1028, 1920, 52}));
  EXPECT_EQ(panel->format, gpu::PixelFormat::bgra8Unorm);
  EXPECT_EQ(panel->rate, 60);

  panel->draw();
  EXPECT_EQ(delegate.renderers().at(1)->frameCount(), 1);
  EXPECT_EQ(delegate.renderers().at(1)->sim().gridW(), 634);
  change([](NimbraConfig& config) { config.quality = 0.5; });
  EXPECT_EQ(delegate.renderers().at(1)->sim().gridW(), 317);
}

TEST_F(AppTest, disabledHidesAndPausesEverythingIncludingTheDriver) {
  AppDelegate delegate(services());
  launch(delegate);
  const auto panel = panels_.live("left");
  change([](NimbraConfig& config) { config.enabled = false; });
  EXPECT_FALSE(panel->shown);
  EXPECT_TRUE(panel->paused);
  const auto ticking = [&] {
    return std::any_of(timers_.entries.begin(), timers_.entries.end(),
                       [](const auto& entry) { return entry->interval < 0.05; });
  };
  EXPECT_FALSE(ticking());
  change([](NimbraConfig& config) { config.enabled = true; });
  EXPECT_TRUE(panel->shown);
  EXPECT_FALSE(panel->paused);
  EXPECT_TRUE(ticking());
  delegate.willTerminate();
  EXPECT_FALSE(panel->shown);
}

class FakeStream final : public BarCaptureStream {
 public:
  void start(const BarRegion& region, BarCaptureHandlers handlers) override {
    regions.push_back(region);
    handlers_ = std::move(handlers);
    running = true;
  }
  void stop() override { running = false; }
  void show() {
    const std::vector<std::byte> rows(1920 * 32 * 4, std::byte{200});
    handlers_.started({1920, 32});
    handlers_.picture({{1920, 32}, rows});
  }
  void fail() { handlers_.failed("it broke"); }

  std::vector<BarRegion> regions;
  bool running = false;

 private:
  BarCaptureHandlers handlers_;
};

TEST_F(AppTest, activityPausesEverythingAndTheWakeLaysOutAnew) {
  bool fullScreen = false;
  ActivityWatcher activity({.settings = [&]() -> const NimbraConfig& { return settings_.config(); },
                            .timers = &timers_,
                            .isFullScreenSpaceActive = [&] { return fullScreen; }});
  AppServices mine = services();
  mine.activity = &activity;
  AppDelegate delegate(mine);
  launch(delegate);
  const auto panel = panels_.live("left");
  EXPECT_TRUE(panel->shown);

  fullScreen = true;
  activity.poll();
  EXPECT_FALSE(panel->shown);
  EXPECT_TRUE(panel->paused);
  EXPECT_EQ(delegate.status().rendering, false);
  EXPECT_EQ(delegate.status().reason, activity.reason());
  EXPECT_NE(activity.reason(), "");

  screens_.list = {right_};  // the change was missed while everything slept
  fullScreen = false;
  activity.poll();
  EXPECT_TRUE(panel->gone);
  ASSERT_NE(panels_.live("right"), nullptr);
  EXPECT_TRUE(panels_.live("right")->shown);

  change([](NimbraConfig& config) { config.enabled = false; });
  EXPECT_FALSE(panels_.live("right")->shown);
  activity.notify(ActivityWatcher::Notification::willSleep);
  change([](NimbraConfig& config) { config.enabled = true; });
  EXPECT_FALSE(panels_.live("right")->shown);
  activity.notify(ActivityWatcher::Notification::didWake);
  EXPECT_TRUE(panels_.live("right")->shown);
}

TEST_F(AppTest, thePanelsTextIsCapturedWhileItIsWanted) {
  FakeStream stream;
  AppServices mine = services();
  mine.captureStream = &stream;
  screens_.list[0].backingScale = 2;
  AppDelegate delegate(mine);
  launch(delegate);
  EXPECT_TRUE(stream.regions.empty());
  change([](NimbraConfig& config) {
    config.allDisplays = true;
    config.layerMode = LayerMode::aboveMenuBar;
    config.preserveMenuBarText = true;
  });
  ASSERT_EQ(stream.regions.size(), 1U);
  EXPECT_EQ(stream.regions[0], (BarRegion{1, {0, 0, 1920, 32}, 2}));
  stream.show();
  EXPECT_TRUE(delegate.status().capture.running);
  ASSERT_NE(delegate.renderers().at(1)->backdrop, nullptr);
  EXPECT_NE(delegate.renderers().at(1)->backdrop->stored(), nullptr);
  EXPECT_EQ(delegate.renderers().at(2)->backdrop, nullptr) << "it is the first screen's bar";
  change([](NimbraConfig& config) { config.exposure = 2; });
  EXPECT_EQ(stream.regions.size(), 1U) << "started once";
  change([](NimbraConfig& config) { config.extraHeight = 10; });
  ASSERT_EQ(stream.regions.size(), 2U);
  EXPECT_EQ(stream.regions[1].rect.height, 42);

  stream.fail();
  EXPECT_EQ(delegate.status().capture.error, "it broke");
  EXPECT_TRUE(panels_.live("left")->shown);
  delegate.updateCapture();
  EXPECT_EQ(stream.regions.size(), 3U);
  const NimbraConfig wanted = settings_.config();
  const std::function<void(NimbraConfig&)> reasons[] = {[](auto& c) { c.enabled = false; },
                                                        [](auto& c) { c.preserveMenuBarText = false; },
                                                        [](auto& c) { c.layerMode = LayerMode::desktopStrip; }};
  for (const auto& reason : reasons) {
    SCOPED_TRACE(&reason - &reasons[0]);
    settings_.setConfig(wanted);
    ASSERT_TRUE(stream.running);
    stream.show();
    stream.fail();
    delegate.updateCapture();
    change(reason);
    EXPECT_FALSE(stream.running);
    EXPECT_EQ(delegate.renderers().at(1)->backdrop->stored(), nullptr);
    EXPECT_EQ(delegate.status().capture.error, std::nullopt) << "nobody wants it any more";
  }
  settings_.setConfig(wanted);
  delegate.willTerminate();
  EXPECT_FALSE(stream.running);
}

TEST_F(AppTest, whereThePanelCantBeCapturedTheStatusSaysSoOnceItIsWanted) {
  AppDelegate delegate(services());
  launch(delegate);
  EXPECT_EQ(delegate.status().capture.error, std::nullopt);
  change([](NimbraConfig& config) {
    config.layerMode = LayerMode::aboveMenuBar;
    config.preserveMenuBarText = true;
  });
  EXPECT_EQ(delegate.status().capture.error, "nobody can see the panel");
}

TEST_F(AppTest, thePointerReachesTheBandsAroundIt) {
  std::optional<Point> where;
  double now = 10;
  PointerTracker pointer(timers_, {[&] { return where; }, ""}, [&] { return now; });
  bool fullScreen = false;
  ActivityWatcher activity({.settings = [&]() -> const NimbraConfig& { return settings_.config(); },
                            .timers = &timers_,
                            .isFullScreenSpaceActive = [&] { return fullScreen; }});
  AppServices mine = services();
  mine.pointer = &pointer;
  mine.activity = &activity;
  AppDelegate delegate(mine);
  launch(delegate);
  change([](NimbraConfig& config) {
    config.allDisplays = true;
    config.pointerMode = PointerMode::none;
  });
  const std::size_t timers = timers_.entries.size();
  change([](NimbraConfig& config) { config.pointerMode = PointerMode::push; });
  EXPECT_EQ(timers_.entries.size(), timers + 1);
  const auto& left = delegate.renderers().at(1)->pointer;
  const auto& right = delegate.renderers().at(2)->pointer;

  where = Point{100, 1070};
  timers_.fire();  // slow, then fast
  now += 0.1;
  where = Point{106, 1064};
  timers_.fire();
  ASSERT_TRUE(left.local);
  EXPECT_TRUE(left.inside);
  EXPECT_EQ(left.local->x, 106);
  EXPECT_EQ(left.local->y, 16);
  EXPECT_NEAR(left.velocity.x, 1, 1e-9);
  EXPECT_NEAR(left.velocity.y, -1, 1e-9);
  EXPECT_FALSE(right.inside);

  where = Point{1940, 1015};  // within the margin of both
  timers_.fire();
  EXPECT_TRUE(left.inside);
  EXPECT_TRUE(right.inside);
  EXPECT_EQ(right.local->x, 20);
  EXPECT_EQ(right.local->y, 65);
  where = Point{1000, 950};  // beyond the margin, but not beyond the wide one
  timers_.fire();
  EXPECT_FALSE(left.inside);
  change([](NimbraConfig& config) { config.pointerOnlyInStrip = false; });
  timers_.fire();
  EXPECT_TRUE(left.inside);
  where = Point{1000, 500};
  timers_.fire();
  EXPECT_FALSE(left.inside);
  EXPECT_FALSE(right.local.has_value());

  where = Point{100, 1070};
  timers_.fire();
  EXPECT_TRUE(left.inside);
  fullScreen = true;
  activity.poll();
  timers_.fire();
  EXPECT_FALSE(left.inside) << "nobody asks for it while nothing is drawn";
}

TEST_F(AppTest, noGpuIsToldInPlainWords) {
  devicesLeft_ = 0;
  AppDelegate delegate(services());
  EXPECT_FALSE(delegate.startGpu());
  EXPECT_EQ(
      alerts_,
      (std::vector<std::string>{"Veloria could not start|This computer has no Vulkan device, so Veloria cannot run."}));
  EXPECT_TRUE(panels_.made.empty());
}

TEST_F(AppTest, noShaderLibraryIsToldWithThePlacesTried) {
  AppServices mine = services();
  mine.shaderLibraries = shaderLibraryCandidates({"/nowhere/share", "/nowhere/bin", "/nowhere/here"});
  AppDelegate delegate(mine);
  EXPECT_FALSE(delegate.startGpu());
  EXPECT_EQ(alerts_, (std::vector<std::string>{
                         "Veloria could not start|Could not load the Vulkan library: default.spv not found. Looked "
                         "in:\n/nowhere/bin/default.spv\n/nowhere/here/default.spv\n/nowhere/here/build/default.spv\n"
                         "\nRun ./build.sh to compile the shaders."}));
}

TEST_F(AppTest, aLostGpuIsReplacedWithTheSettingsIntact) {
  AppDelegate delegate(services());
  launch(delegate);
  change([](NimbraConfig& config) { config.extraHeight = 20; });
  const auto before = panels_.live("left");
  before->draw();
  dynamic_cast<RecordingDevice*>(device_)->lose();
  devicesLeft_ = 0;
  before->draw();
  for (int i = 0; i < 3; ++i) timers_.fire();
  EXPECT_EQ(delegate.windowCount(), 0U);
  devicesLeft_ = 1;
  timers_.fire();
  ASSERT_EQ(delegate.windowCount(), 1U);
  const auto after = panels_.live("left");
  EXPECT_NE(after, before);
  EXPECT_TRUE(after->shown);
  EXPECT_EQ(after->frame.height, 52);
  after->draw();
  EXPECT_EQ(delegate.renderers().at(1)->frameCount(), 1);
  EXPECT_TRUE(alerts_.empty());
}

TEST_F(AppTest, aGpuThatStaysAwayEndsTheProgramWithAMessage) {
  AppDelegate delegate(services());
  launch(delegate);
  devicesLeft_ = 0;
  dynamic_cast<RecordingDevice*>(device_)->lose();
  panels_.live("left")->draw();
  for (int i = 0; i < 100 && terminations_ == 0; ++i) timers_.fire();
  EXPECT_EQ(terminations_, 1);
  EXPECT_EQ(alerts_.size(), 1U);
}

TEST_F(AppTest, restartEmptiesEveryFluid) {
  AppDelegate delegate(services());
  launch(delegate);
  panels_.live("left")->draw();
  EXPECT_FALSE(delegate.renderers().at(1)->sim().needsClear);
  delegate.restartSimulation();
  EXPECT_TRUE(delegate.renderers().at(1)->sim().needsClear);
}

TEST_F(AppTest, theHintIsGivenOnce) {
  panels_.hint = "The panel hides the band.";
  AppDelegate delegate(services());
  launch(delegate);
  EXPECT_TRUE(hints_.empty());
  timers_.fire();
  screens_.change({left_});
  timers_.fire();
  EXPECT_EQ(hints_, std::vector<std::string>{"The panel hides the band."});
}

TEST(Level, debugLevelWinsWhenItIsANumber) {
  const std::pair<std::optional<std::string>, OverlayLevel> table[] = {
      {std::nullopt, OverlayLevel::aboveMenuBar}, {"0", OverlayLevel::desktop},
      {"+7", OverlayLevel::aboveMenuBar},         {"7x", OverlayLevel::aboveMenuBar},
      {"+-7", OverlayLevel::aboveMenuBar},        {"99999999999999999999", OverlayLevel::aboveMenuBar}};
  for (const auto& [text, level] : table) {
    EXPECT_EQ(overlayLevelFor(LayerMode::aboveMenuBar, text), level) << text.value_or("(none)");
  }
  EXPECT_EQ(overlayLevelFor(LayerMode::desktopFull, "1"), OverlayLevel::aboveMenuBar);
  EXPECT_EQ(overlayLevelFor(LayerMode::desktopStrip, std::nullopt), OverlayLevel::desktop);
}

}  // namespace
}  // namespace veloria::tests
