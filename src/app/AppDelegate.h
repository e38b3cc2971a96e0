#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/AppStatus.h"
#include "app/NimbraWindow.h"
#include "app/ShaderLibrary.h"
#include "base/Environment.h"
#include "gpu/Device.h"
#include "ports/BarCaptureStream.h"
#include "ports/EventLoop.h"
#include "ports/OverlayPanel.h"
#include "ports/PanelClearing.h"
#include "ports/ScreenProvider.h"
#include "render/MenuBarCapture.h"
#include "render/NimbraRenderer.h"
#include "render/PointerTracker.h"
#include "render/RatePlan.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

/// What the delegate is made of. Everything must outlive it.
struct AppServices {
  /// Makes the GPU device. Throws gpu::NoDeviceError when there is none, gpu::DeviceError when its driver fails.
  std::function<std::unique_ptr<gpu::Device>()> makeDevice;
  /// Makes the device that draws on the CPU in a GPU's place. Throws gpu::NoDeviceError if there is none, or if the
  /// user wants a certain device and no other.
  std::function<std::unique_ptr<gpu::Device>()> makeSubstitute;
  std::vector<std::filesystem::path> shaderLibraries;
  ScreenProvider* screens = nullptr;
  OverlayPanelFactory* panels = nullptr;
  TimerFactory* timers = nullptr;
  SettingsStore* settings = nullptr;
  SceneDriver* driver = nullptr;
  /// Null: the band is drawn whenever it is enabled.
  ActivityWatcher* activity = nullptr;
  /// Null: the pointer is not followed.
  PointerTracker* pointer = nullptr;
  /// Null if the menu bar can't be captured; `captureProblem` then says why, for people.
  BarCaptureStream* captureStream = nullptr;
  std::string captureProblem;
  /// Null if the panel can't be made clear.
  PanelClearing* clearing = nullptr;
  /// Whether the panel's text can be kept readable under a band over it now. May be empty: never.
  std::function<bool()> textCanBeKept = {};
  /// Why the wallpaper gives no colours. May be empty.
  std::function<std::optional<std::string>()> pictureError = {};
  Environment environment;
  /// The display system, for people: "x11" or "wayland".
  std::string backendName;
  /// Shows a critical message until it is dismissed.
  std::function<void(const std::string& message, const std::string& informative)> alert;
  /// Ends the event loop, after an error that can't be recovered from.
  std::function<void()> terminate;
  /// Shows the user a hint, which may go unnoticed. Each text once at most.
  std::function<void(const std::string& text)> hint;
  /// Called after a first start has taken another layer than the default one. May be empty.
  std::function<void()> firstLayerTaken = {};
};

/// The screens that get a band: all of them, or the first one only.
std::vector<Screen> targetScreens(const NimbraConfig& config, const std::vector<Screen>& screens);

/// The extra work that a change of settings needs.
struct ChangePlan {
  bool recompile = false;
  bool rebuildWindows = false;
  bool resizeGrids = false;
  bool operator==(const ChangePlan&) const = default;
};
ChangePlan planChange(const std::optional<NimbraConfig>& last, const NimbraConfig& now);

/// The controller of the application: owns one GPU device and shader library, and a window and renderer for each target
/// screen. Rebuilds as little as possible when settings or screens change. Main thread.
class AppDelegate {
 public:
  explicit AppDelegate(AppServices services);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Makes the device, or its substitute, the shader library and the capture. If that fails, shows the alert and
  /// returns false; the program should then end.
  bool startGpu();
  /// Starts everything else, once startGpu() has returned true.
  void didFinishLaunching();
  void willTerminate();

  /// Retries the capture of the menu bar if it is wanted and not running, for example once a permission is granted.
  void updateCapture();

  /// Call it when a panel may hide more or less than before: a compositor has come or gone, or a panel is clear now.
  void panelsChanged();

  /// Whether anything is drawn.
  bool isDrawing() const { return drawing_; }

  /// Clears every fluid; the next frames start empty.
  void restartSimulation();

  AppStatus status() const;

  std::size_t windowCount() const { return windows_.size(); }
  const std::map<std::uint32_t, std::shared_ptr<NimbraRenderer>>& renderers() const { return renderers_; }

 private:
  /// Why there is nothing to draw with.
  struct GpuProblem {
    std::string text;      ///< for an alert
    std::string ofDevice;  ///< what is wrong with the device; empty if it is the shader library
  };
  /// No problem: device, library and capture are made.
  std::optional<GpuProblem> makeGpu(const std::function<std::unique_ptr<gpu::Device>()>& makeDevice);
  /// False, and nothing made, if the problem is another one or there is no substitute.
  bool makeSubstitute(const GpuProblem& problem, const std::string& reason);
  std::string noDeviceText(const std::string& problem) const;
  void rebuildWindows();
  void makeWindow(const Screen& screen, const NimbraConfig& config);
  void removeWindows(const std::set<std::uint32_t>& keep);
  void configChanged(const NimbraConfig& config);
  void updateRenderingState();
  void setRendering(bool on);
  void updatePointerInterest();
  void distributePointer(const std::optional<Point>& point, Point velocity);
  bool wantsCapture() const;
  CaptureStatus captureStatus() const;
  bool shouldRender() const;
  std::string reasonForDarkness() const;
  Visibility visibilityOf(const NimbraWindow& window) const;
  std::set<std::uint32_t> hiddenWindows(bool newOnes) const;
  void judgeVisibility(bool mayHide);
  void watchVisibility();
  std::string offerText() const;
  void judgeRate();
  void deviceLost();
  void recoverDevice();
  void panelsSettled();
  void takeFirstLayer();

  AppServices services_;
  std::unique_ptr<gpu::Device> device_;
  std::unique_ptr<gpu::Library> library_;
  std::string whySubstitute_;  ///< empty while the device is no substitute
  std::unique_ptr<MenuBarCapture> capture_;
  std::map<std::uint32_t, std::shared_ptr<NimbraRenderer>> renderers_;
  std::map<std::uint32_t, std::unique_ptr<NimbraWindow>> windows_;
  std::optional<NimbraConfig> lastConfig_;
  ExtraSettings lastExtra_;
  bool firstStart_ = false;         ///< the layer has still to be chosen
  bool rendering_ = false;          ///< nothing but panels keeps the bands from being drawn
  bool drawing_ = false;            ///< at least one is
  std::set<std::uint32_t> hidden_;  ///< windows that panels cover; nothing is drawn for them
  std::unique_ptr<Timer> visibilityTimer_;
  RatePlan rate_;
  std::unique_ptr<Timer> rateTimer_;
  Subscription settingsSubscription_;
  std::unique_ptr<Timer> recovery_;
  int recoveryAttempts_ = 0;  ///< since a GPU was last sound
  OneShot steady_;
  OneShot hintTimer_;
  std::set<std::string> hintsGiven_;
};

}  // namespace veloria
