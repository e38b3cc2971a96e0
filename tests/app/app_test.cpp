// The delegate on invented screens and panels: what is built, rebuilt and left alone.

#include <gmock/gmock.h>

#include "../support/ManualTimers.h"
#include "../support/MemoryStorage.h"
#include "app/AppDelegate.h"
#include "app/FirstMinute.h"
#include "gpu/recording/RecordingDevice.h"

namespace veloria::tests {
namespace {

using gpu::recording::RecordingDevice;
using gpu::recording::RecordingSurface;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FakeScreens final : public ScreenProvider {
 public:
  explicit FakeScreens(std::vector<Screen> first) : list(std::move(first)) {}
  std::vector<Screen> screens() override { return list; }
  void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }

  std::vector<Screen> list;
  std::function<void()> changed;
};

Screen screenNamed(const char* name, std::uint32_t number, double x) {
  Screen screen;
  screen.number = number;
  screen.name = name;
  screen.frame = {x, 0, 1920, 1080};
  screen.visibleFrame = {x, 0, 1920, 1048};
  return screen;
}

class FakePanel final : public OverlayPanel {
 public:
  FakePanel(std::map<std::string, FakePanel*>& live, const std::string& screen, RecordingDevice& device)
      : live_(live), screen_(screen), surface_(device) {
    live_[screen] = this;
  }
  ~FakePanel() override { live_.erase(screen_); }

  void setFrame(const Rect& now, double scale) override {
    frame = now;
    size_ = {static_cast<std::uint32_t>(frame.width * scale), static_cast<std::uint32_t>(frame.height * scale)};
    surface_.configure(size_, format);
  }
  void setLevel(OverlayLevel now) override { level = now; }
  void setPixelFormat(gpu::PixelFormat wanted) override { surface_.configure(size_, format = wanted); }
  void setPreferredFramesPerSecond(double now) override { rate = now; }
  void setPaused(bool now) override { paused = now; }
  void setDrawHandler(std::function<void()> handler) override { draw = std::move(handler); }
  void orderFront() override { shown = true; }
  void orderOut() override { shown = false; }
  gpu::Size drawableSize() const override { return surface_.size(); }
  gpu::PixelFormat colorPixelFormat() const override { return surface_.format(); }
  gpu::Drawable* currentDrawable() override { return surface_.nextDrawable(); }

  Rect frame;
  OverlayLevel level = OverlayLevel::desktop;
  gpu::PixelFormat format = gpu::PixelFormat::invalid;
  double rate = 0;
  bool paused = true;
  bool shown = false;
  std::function<void()> draw;

 private:
  std::map<std::string, FakePanel*>& live_;
  std::string screen_;
  gpu::Size size_;
  RecordingSurface surface_;
};

class FakePanels final : public OverlayPanelFactory {
 public:
  std::unique_ptr<OverlayPanel> makePanel(const Screen& screen) override {
    if (screen.name == refused) throw std::runtime_error("no window for this one");
    return std::make_unique<FakePanel>(live, screen.name, *device);
  }
  Visibility visibility(const Screen&, const Rect&, OverlayLevel level) override {
    if (level != OverlayLevel::desktop || kind == Visibility::Kind::seen) return {};
    return {kind, "The panel hides the band."};
  }

  RecordingDevice* device = nullptr;
  std::map<std::string, FakePanel*> live;
  Visibility::Kind kind = Visibility::Kind::seen;
  std::string refused;  ///< the screen that gets no panel
};

class FakeClearing final : public PanelClearing {
 public:
  Offer offer() const override { return {Way::oneClick, "Nothing else changes.", ""}; }
  bool letsLightThrough() const override { return clear_; }
  bool canRestore() const override { return clear_; }
  void clear(Answer) override { clear_ = true; }
  void restore(Answer) override { clear_ = false; }
  void setWanted(bool now) override { wanted = now; }
  void setChangeHandler(std::function<void()>) override {}

  bool wanted = false;

 private:
  bool clear_ = false;
};

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

  std::vector<BarRegion> regions;
  bool running = false;

 private:
  BarCaptureHandlers handlers_;
};

class AppTest : public testing::Test {
 protected:
  std::unique_ptr<gpu::Device> makeDevice(int& left) {
    EXPECT_TRUE(drawsWithOldDevice_.expired()) << "what the old device made ends before it";
    if (left-- <= 0) throw gpu::NoDeviceError("there is no GPU");
    auto device = std::make_unique<RecordingDevice>(std::set<std::string>{
        "k_advect_velocity", "k_curl", "k_forces", "k_divergence", "k_jacobi", "k_project", "k_advect_dye", "k_clear",
        "v_fullscreen", "f_nimbra", "f_down", "f_blur", "f_mask", "f_final"});
    panels_.device = device.get();
    return device;
  }
  AppDelegate& launch() {
    delegate_ = std::make_unique<AppDelegate>(services_);
    EXPECT_TRUE(delegate_->startGpu());
    delegate_->didFinishLaunching();
    return *delegate_;
  }

  void change(const std::function<void(NimbraConfig&)>& edit) {
    NimbraConfig config = settings_.config();
    edit(config);
    settings_.setConfig(config);
  }
  void setScreens(std::vector<Screen> now) {
    screens_.list = std::move(now);
    screens_.changed();
  }
  void setFullScreen(bool on) {
    fullScreen_ = on;
    activity_.poll();
  }
  void loseGpu() {
    drawsWithOldDevice_ = delegate_->renderers().at(1);
    panels_.device->lose();
    panels_.live.at("left")->draw();
  }

  const Screen left_ = screenNamed("left", 1, 0);
  const Screen right_ = screenNamed("right", 2, 1920);
  int devicesLeft_ = 1000, substitutesLeft_ = 0;
  std::weak_ptr<NimbraRenderer> drawsWithOldDevice_;
  bool fullScreen_ = false;
  FakeScreens screens_{{left_, right_}};
  FakePanels panels_;
  ManualTimers timers_;
  SettingsStore settings_{std::make_unique<MemoryStorage>(), emptyEnvironment};
  SceneDriver driver_{{.settings = [this]() -> const NimbraConfig& { return settings_.config(); },
                       .mediaClock = mediaTime,
                       .wallClock = [] { return 0.0; },
                       .timers = &timers_}};
  ActivityWatcher activity_{{.settings = [this]() -> const NimbraConfig& { return settings_.config(); },
                             .timers = &timers_,
                             .isFullScreenSpaceActive = [this] { return fullScreen_; }}};
  std::optional<Point> pointerPlace_;
  double now_ = 10;
  PointerTracker pointer_{timers_, {[this] { return pointerPlace_; }, ""}, [this] { return now_; }};
  FakeStream stream_;
  FakeClearing clearing_;
  std::vector<std::string> alerts_, hints_;
  int terminations_ = 0;
  AppServices services_{
      .makeDevice = [this] { return makeDevice(devicesLeft_); },
      .makeSubstitute = [this] { return makeDevice(substitutesLeft_); },
      .shaderLibraries = {VELORIA_TEST_DATA "/CMakeLists.txt"},
      .screens = &screens_,
      .panels = &panels_,
      .timers = &timers_,
      .settings = &settings_,
      .driver = &driver_,
      .activity = &activity_,
      .captureProblem = "nobody can see the panel",
      .environment = emptyEnvironment,
      .backendName = "none",
      .alert = [this](const std::string& title, const std::string& text) { alerts_.push_back(title + "|" + text); },
      .terminate = [this] { ++terminations_; },
      .hint = [this](const std::string& text) { hints_.push_back(text); }};
  std::unique_ptr<AppDelegate> delegate_;
};

TEST_F(AppTest, OneBandOnTheFirstScreenAndMoreOnRequest) {
  AppDelegate& delegate = launch();
  ASSERT_EQ(delegate.windowCount(), 1U);
  FakePanel* first = panels_.live.at("left");
  EXPECT_EQ(first->frame, (Rect{0, 1048, 1920, 32}));
  EXPECT_TRUE(first->shown);
  EXPECT_FALSE(first->paused);
  change([](auto& c) { c.allDisplays = true; });
  EXPECT_EQ(panels_.live.at("right")->frame, (Rect{1920, 1048, 1920, 32}));
  EXPECT_EQ(panels_.live.at("left"), first) << "the first is kept";

  setScreens({right_});
  EXPECT_FALSE(panels_.live.contains("left"));
  setScreens({});
  EXPECT_EQ(delegate.windowCount(), 0U);
  setScreens({left_, right_});
  EXPECT_TRUE(panels_.live.at("left")->shown);
  const Rect place = std::exchange(panels_.live.at("left")->frame, Rect{});
  screens_.changed();
  EXPECT_EQ(panels_.live.at("left")->frame, place) << "put back where the system had moved it";
  delegate.willTerminate();
  EXPECT_FALSE(panels_.live.at("left")->shown);
}

TEST_F(AppTest, AScreenThatCanHaveNoBandDoesNotCostTheOthersTheirs) {
  change([](auto& c) { c.allDisplays = true; });
  panels_.refused = "left";
  EXPECT_EQ(launch().windowCount(), 1U);
  EXPECT_TRUE(panels_.live.at("right")->shown);
}

TEST(ChangePlan, IsTheSmallestWork) {
  const NimbraConfig base;
  EXPECT_EQ(planChange(std::nullopt, base), (ChangePlan{true, true, true}));
  const ChangePlan recompile{true, false, false}, rebuild{false, true, false}, resize{false, false, true};
  const std::pair<void (*)(NimbraConfig&), ChangePlan> table[] = {
      {[](auto& c) { c.exposure = 3; }, {}},
      {[](auto& c) { c.visualizer = Visualizer::music; }, recompile},
      {[](auto& c) { c.customScript = "x"; }, recompile},
      {[](auto& c) { c.matchWallpaper = true; }, recompile},
      {[](auto& c) { c.enabled = false; }, recompile},
      {[](auto& c) { c.allDisplays = true; }, rebuild},
      {[](auto& c) { c.layerMode = LayerMode::desktopFull; }, rebuild},
      {[](auto& c) { c.extraHeight = 9; }, rebuild},
      {[](auto& c) { c.notchMode = NotchMode::halo; }, rebuild},
      {[](auto& c) { c.notchPadding = 9; }, rebuild},
      {[](auto& c) { c.hdrGlow = false; }, rebuild},
      {[](auto& c) { c.framesPerSecond = 30; }, rebuild},
      {[](auto& c) { c.quality = 0.5; }, resize},
      {[](auto& c) { c.verticalStretch = 1; }, resize},
  };
  for (const auto& [edit, expected] : table) {
    NimbraConfig changed = base;
    edit(changed);
    EXPECT_EQ(planChange(base, changed), expected) << &edit - &table[0].first;
  }
}

TEST_F(AppTest, SettingsReachThePanelAndTheRenderer) {
  AppDelegate& delegate = launch();
  NimbraRenderer& renderer = *delegate.renderers().at(1);
  FakePanel* panel = panels_.live.at("left");
  change([](auto& c) { c.exposure = 3; });
  driver_.tick();
  EXPECT_EQ(renderer.config.exposure, 3);
  change([](auto& c) {
    c.visualizer = Visualizer::script;
    c.customScript = "set nothing 1";
  });
  EXPECT_TRUE(delegate.status().scriptError) << "the new mode's script runs at once";
  EXPECT_EQ(panel->format, gpu::PixelFormat::rgba16Float);
  change([](auto& c) {
    c.layerMode = LayerMode::aboveMenuBar;
    c.preserveMenuBarText = true;
    c.extraHeight = 20;
    c.hdrGlow = false;
    c.framesPerSecond = 0;
  });
  EXPECT_EQ(delegate.status().capture.error, "nobody can see the panel");
  EXPECT_EQ(panel->level, OverlayLevel::aboveMenuBar);
  EXPECT_EQ(panel->frame, (Rect{0, 1028, 1920, 52}));
  EXPECT_EQ(panel->format, gpu::PixelFormat::bgra8Unorm);
  EXPECT_EQ(panel->rate, 60);

  panel->draw();
  EXPECT_EQ(renderer.sim().gridW(), 634);
  change([](auto& c) { c.quality = 0.5; });
  EXPECT_EQ(renderer.sim().gridW(), 317);
  panel->draw();
  EXPECT_FALSE(renderer.sim().needsClear);
  delegate.restartSimulation();
  EXPECT_TRUE(renderer.sim().needsClear);
}

TEST_F(AppTest, ActivityPausesEverythingAndTheWakeLaysOutAnew) {
  AppDelegate& delegate = launch();
  FakePanel* panel = panels_.live.at("left");
  const std::size_t timers = timers_.entries.size();
  setFullScreen(true);
  EXPECT_LT(timers_.entries.size(), timers) << "the driver rests too";
  EXPECT_FALSE(panel->shown);
  EXPECT_TRUE(panel->paused);
  EXPECT_EQ(delegate.status().reason, activity_.reason());

  screens_.list = {right_};  // the change was missed while everything slept
  setFullScreen(false);
  EXPECT_FALSE(panels_.live.contains("left"));
  FakePanel* right = panels_.live.at("right");
  EXPECT_TRUE(right->shown);
  EXPECT_FALSE(right->paused);
  change([](auto& c) { c.enabled = false; });
  EXPECT_FALSE(right->shown);
}

TEST_F(AppTest, ThePanelsTextIsCapturedWhileItIsWanted) {
  services_.captureStream = &stream_;
  screens_.list[0].backingScale = 2;
  AppDelegate& delegate = launch();
  change([](auto& c) {
    c.allDisplays = true;
    c.layerMode = LayerMode::aboveMenuBar;
    c.preserveMenuBarText = true;
  });
  const NimbraConfig wanted = settings_.config();
  EXPECT_THAT(stream_.regions, ElementsAre(BarRegion{1, {0, 0, 1920, 32}, 2}));
  settings_.setExtra({EdgeChoice::bottom});
  EXPECT_EQ(stream_.regions.back(), (BarRegion{1, {0, 1056, 1920, 24}, 2}));
  settings_.setExtra({});
  stream_.show();
  ASSERT_NE(delegate.renderers().at(1)->backdrop, nullptr);
  EXPECT_NE(delegate.renderers().at(1)->backdrop->stored(), nullptr);
  EXPECT_EQ(delegate.renderers().at(2)->backdrop, nullptr) << "it is the first screen's bar";
  change([](auto& c) { c.exposure = 2; });
  EXPECT_EQ(stream_.regions.size(), 3U) << "started once for a place";
  void (*const edits[])(NimbraConfig&) = {[](auto& c) { c.enabled = false; },
                                          [](auto& c) { c.preserveMenuBarText = false; },
                                          [](auto& c) { c.layerMode = LayerMode::desktopStrip; }};
  for (const auto& edit : edits) {
    settings_.setConfig(wanted);
    ASSERT_TRUE(stream_.running);
    stream_.show();
    change(edit);
    EXPECT_FALSE(stream_.running) << &edit - edits;
    EXPECT_EQ(delegate.renderers().at(1)->backdrop->stored(), nullptr);
  }
}

TEST_F(AppTest, ThePointerReachesTheBandsAroundIt) {
  services_.pointer = &pointer_;
  AppDelegate& delegate = launch();
  change([](auto& c) { c.allDisplays = true; });
  const PointerState& left = delegate.renderers().at(1)->pointer;
  const PointerState& right = delegate.renderers().at(2)->pointer;
  const auto reached = [&](double x, double y) {
    pointerPlace_ = Point{x, y};
    timers_.fire();
    return std::pair(left.inside, right.inside);
  };
  reached(100, 1070);  // slow, then fast
  now_ += 0.1;
  EXPECT_EQ(reached(106, 1064), std::pair(true, false));
  EXPECT_EQ(left.local, (Point{106, 16}));
  EXPECT_NEAR(left.velocity.x, 1, 1e-9);
  EXPECT_NEAR(left.velocity.y, -1, 1e-9);
  EXPECT_EQ(reached(1940, 1015), std::pair(true, true)) << "within the margin of both";
  EXPECT_EQ(right.local, (Point{20, 65}));
  EXPECT_FALSE(reached(1000, 950).first) << "beyond the margin, but not beyond the wide one";
  change([](auto& c) { c.pointerOnlyInStrip = false; });
  EXPECT_TRUE(reached(1000, 950).first);
  EXPECT_FALSE(reached(1000, 500).first);
  setFullScreen(true);
  EXPECT_FALSE(reached(100, 1070).first) << "not followed while nothing is drawn";
}

TEST_F(AppTest, AStartWithoutAGpuOrALibraryIsExplained) {
  services_.shaderLibraries = shaderLibraryCandidates({"/nowhere/share", "/nowhere/bin", "/nowhere/here"});
  for (const int devices : {1, 0}) {
    devicesLeft_ = devices;
    substitutesLeft_ = devices;
    EXPECT_FALSE(AppDelegate(services_).startGpu());
  }
  EXPECT_EQ(substitutesLeft_, -1) << "none for a library that is missing";
  services_.environment = [](std::string_view) { return std::optional<std::string>("quantum"); };
  EXPECT_FALSE(AppDelegate(services_).startGpu());
  EXPECT_THAT(alerts_, ElementsAre(HasSubstr("Looked in:\n/nowhere/bin/default.spv\n"), HasSubstr("no Vulkan device"),
                                   HasSubstr("that NIMBRA_GPU names: there is no GPU.")));
}

TEST_F(AppTest, ALostGpuIsReplacedWithTheSettingsIntactOrEndsTheProgram) {
  AppDelegate& delegate = launch();
  change([](auto& c) { c.extraHeight = 20; });
  devicesLeft_ = 0;
  loseGpu();
  for (int i = 0; i < 3; ++i) timers_.fire();
  EXPECT_EQ(delegate.windowCount(), 0U);
  EXPECT_EQ(delegate.status().reason, "the GPU was lost and is not back yet");
  devicesLeft_ = 1;
  timers_.fire();
  ASSERT_EQ(delegate.windowCount(), 1U);
  FakePanel* after = panels_.live.at("left");
  EXPECT_TRUE(after->shown);
  EXPECT_EQ(after->frame.height, 52);
  after->draw();
  EXPECT_EQ(delegate.renderers().at(1)->frameCount(), 1);
  EXPECT_THAT(alerts_, IsEmpty());
  loseGpu();
  for (int i = 0; i < 100 && terminations_ == 0; ++i) timers_.fire();
  EXPECT_EQ(terminations_, 1);
  EXPECT_EQ(alerts_.size(), 1U);
}

TEST_F(AppTest, TheCpuTakesThePlaceOfAGpuThatCannotBeUsed) {
  devicesLeft_ = 0;
  substitutesLeft_ = 2;
  launch();
  EXPECT_EQ(delegate_->status().device, "recording (there is no GPU)");
  delegate_.reset();
  devicesLeft_ = 2;
  launch();
  for (const char* device : {"recording", "recording (the GPU was lost)"}) {
    loseGpu();
    for (int i = 0; i < 40; ++i) timers_.fire();
    ASSERT_EQ(delegate_->windowCount(), 1U);
    EXPECT_EQ(delegate_->status().device, device);
  }
  EXPECT_TRUE(panels_.live.at("left")->shown);
  EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(AppTest, TheCpuTakesThePlaceOfAGpuThatIsLostAgainAndAgain) {
  substitutesLeft_ = 1;
  launch();
  int losses = 0;
  for (; losses < 100 && delegate_->status().device == "recording"; ++losses) {
    loseGpu();
    timers_.fire();
    if (losses == 15) timers_.fire();  // it was sound for a while
  }
  EXPECT_GT(losses, 30);
  EXPECT_LT(losses, 40);
  EXPECT_EQ(delegate_->status().device, "recording (the GPU was lost)");
  EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(AppTest, TheHintIsGivenOnceAndOnlyAboutABandThatIsDrawn) {
  panels_.kind = Visibility::Kind::mayBeHidden;
  services_.clearing = &clearing_;
  settings_.keep();
  fullScreen_ = true;
  AppDelegate& delegate = launch();
  timers_.fire();
  EXPECT_THAT(hints_, IsEmpty());
  setFullScreen(false);
  for (int i = 0; i < 2; ++i) {
    timers_.fire();
    screens_.changed();
  }
  EXPECT_THAT(hints_, ElementsAre("The panel hides the band."));
  EXPECT_EQ(delegate.status().hint,
            "The panel hides the band. Or choose \"Let the light through the panel\" there. Nothing else changes.");
  clearing_.clear({});
  EXPECT_EQ(delegate.status().hint, "") << "a clear panel hides nothing";
  EXPECT_EQ(delegate.status().panelClear, true);
  clearing_.restore({});
  change([](auto& c) { c.extraHeight = 20; });
  EXPECT_EQ(delegate.status().hint, "") << "light below the panel is seen";
}

TEST_F(AppTest, WhatIsCertainlyHiddenIsDarkUntilItIsSeen) {
  settings_.keep();
  services_.clearing = &clearing_;
  panels_.kind = Visibility::Kind::hidden;
  AppDelegate& delegate = launch();
  FakePanel* panel = panels_.live.at("left");
  EXPECT_TRUE(panel->shown) << "the panels may not be complete yet";
  const auto isDark = [&] { return !panel->shown && panel->paused && !delegate.isDrawing(); };
  const std::function<void()> lights[] = {
      [this] { panels_.kind = Visibility::Kind::mayBeHidden; },
      [this] { clearing_.clear({}); },
      [this] { change([](auto& c) { c.layerMode = LayerMode::aboveMenuBar; }); },
      [this] { change([](auto& c) { c.extraHeight = 30; }); },
  };
  for (const auto& light : lights) {
    settings_.setConfig({});
    clearing_.restore({});
    panels_.kind = Visibility::Kind::hidden;
    timers_.fire();
    ASSERT_TRUE(isDark()) << &light - lights;
    EXPECT_EQ(delegate.status().reason, "the panel at the top of the screen is opaque and covers the band");
    EXPECT_EQ(delegate.status().hint.substr(0, 25), "The panel hides the band.");
    EXPECT_TRUE(clearing_.wanted) << "it would be seen through a clear panel";
    light();
    timers_.fire();
    EXPECT_FALSE(isDark()) << &light - lights;
    EXPECT_EQ(delegate.status().reason, "");
  }
  change([](auto& c) { c.enabled = false; });
  EXPECT_FALSE(clearing_.wanted);
}

TEST_F(AppTest, ABandIsHiddenOnItsOwnScreenOnly) {
  settings_.keep();
  panels_.kind = Visibility::Kind::hidden;
  change([](auto& c) { c.allDisplays = true; });
  AppDelegate& delegate = launch();
  timers_.fire();
  EXPECT_FALSE(delegate.isDrawing());
  settings_.setExtra({EdgeChoice::bottom});
  EXPECT_EQ(panels_.live.at("left")->frame, (Rect{0, 0, 1920, 24})) << "it follows the setting while it is dark";
  EXPECT_EQ(delegate.status().reason, "the panel at the bottom of the screen is opaque and covers the band");
}

TEST_F(AppTest, AFirstStartIsSeenAndNoOtherStartIsChanged) {
  services_.textCanBeKept = [] { return true; };
  int told = 0;
  services_.firstLayerTaken = [&] { ++told; };
  launch();
  timers_.fire();
  EXPECT_TRUE(settings_.isNew()) << "no panel has come yet";
  panels_.kind = Visibility::Kind::hidden;
  screens_.changed();
  timers_.fire();
  EXPECT_EQ(settings_.config(), firstStartConfig({Visibility::Kind::hidden, Visibility::Kind::seen, true}));
  EXPECT_FALSE(settings_.isNew());
  EXPECT_EQ(told, 1);
  settings_.setConfig({});
  timers_.fire();
  EXPECT_EQ(settings_.config(), NimbraConfig()) << "the user's own choice stands";
  EXPECT_THAT(hints_, ElementsAre("The panel hides the band."));
}

TEST_F(AppTest, AFirstStartWithALayerFromTheEnvironmentChoosesNothing) {
  panels_.kind = Visibility::Kind::hidden;
  services_.environment = [](std::string_view name) {
    return name == "NIMBRA_LAYER" ? std::optional<std::string>("desktopStrip") : std::nullopt;
  };
  launch();
  timers_.fire();
  EXPECT_EQ(settings_.config(), NimbraConfig());
}

}  // namespace
}  // namespace veloria::tests
