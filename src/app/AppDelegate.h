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
#include "ports/OverlayPanel.h"
#include "ports/ScreenProvider.h"
#include "ports/Timer.h"
#include "render/MenuBarCapture.h"
#include "render/NimbraRenderer.h"
#include "render/PointerTracker.h"
#include "scene/SceneDriver.h"
#include "settings/SettingsStore.h"
#include "sources/ActivityWatcher.h"

namespace veloria {

/// What the delegate is made of. Everything must outlive it.
struct AppServices {
  /// Makes the GPU device. Throws gpu::NoDeviceError when there is none, gpu::DeviceError when its driver fails.
  std::function<std::unique_ptr<gpu::Device>()> makeDevice;
  std::vector<std::filesystem::path> shaderLibraries;
  ScreenProvider* screens = nullptr;
  OverlayPanelFactory* panels = nullptr;
  TimerFactory* timers = nullptr;
  SettingsStore* settings = nullptr;
  SceneDriver* driver = nullptr;
  /// Null: the band is drawn whenever it is enabled.
  ActivityWatcher* activity = nullptr;
  /// Null: nobody follows the pointer.
  PointerTracker* pointer = nullptr;
  /// Null where the menu bar can't be captured; `captureProblem` then says why, for people.
  BarCaptureStream* captureStream = nullptr;
  std::string captureProblem;
  /// Why the desktop's picture gives no colours. Empty: nobody can say.
  std::function<std::optional<std::string>()> pictureError = {};
  Environment environment;
  /// What the panels are made on, for people: "x11" or "wayland".
  std::string backendName;
  /// Shows a critical message (a title and what it is about) until it is read.
  std::function<void(const std::string& message, const std::string& informative)> alert;
  /// Ends the event loop: what an alert told of can't be mended.
  std::function<void()> terminate;
  /// Tells the user something, at most once each; it can be overlooked.
  std::function<void(const std::string& text)> hint;
};

/// The screens that get a band: all of them, or the first one only.
std::vector<Screen> targetScreens(const NimbraConfig& config, const std::vector<Screen>& screens);

/// The work that a change of settings needs beyond the next frame's.
struct ChangePlan {
  bool recompile = false;
  bool rebuildWindows = false;
  bool resizeGrids = false;
  bool operator==(const ChangePlan&) const = default;
};
ChangePlan planChange(const std::optional<NimbraConfig>& last, const NimbraConfig& now);

/// The spine of the application: one device and shader library, a window and renderer for each target screen, and the
/// smallest rebuild for each change of settings or screens. Main thread.
class AppDelegate {
 public:
  explicit AppDelegate(AppServices services);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Makes the device, its shader library and the capture. Where that fails it shows the alert and returns false: the
  /// program should end, and nothing else need have been made.
  bool startGpu();
  /// Starts everything else, once startGpu() has returned true.
  void didFinishLaunching();
  void willTerminate();

  /// Tries the capture of the menu bar again where it is wanted and does not run: when what it lacked has come.
  void updateCapture();

  /// Empties every fluid; the next frames start from nothing.
  void restartSimulation();

  AppStatus status() const;

  std::size_t windowCount() const { return windows_.size(); }
  const std::map<std::uint32_t, std::shared_ptr<NimbraRenderer>>& renderers() const { return renderers_; }

 private:
  /// Why the GPU can't be used; empty when it can.
  std::string makeGpu();
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
  std::string hintFor(const NimbraWindow& window) const;
  void deviceLost();
  void recoverDevice();
  void giveHints();

  AppServices services_;
  std::unique_ptr<gpu::Device> device_;
  std::unique_ptr<gpu::Library> library_;
  std::unique_ptr<MenuBarCapture> capture_;
  std::map<std::uint32_t, std::shared_ptr<NimbraRenderer>> renderers_;
  std::map<std::uint32_t, std::unique_ptr<NimbraWindow>> windows_;
  std::optional<NimbraConfig> lastConfig_;
  bool rendering_ = false;
  Subscription settingsSubscription_;
  std::unique_ptr<Timer> recovery_;
  int recoveryAttempts_ = 0;
  OneShot hintTimer_;
  std::set<std::string> hintsGiven_;
};

}  // namespace veloria
