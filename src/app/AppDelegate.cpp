#include "app/AppDelegate.h"

#include <algorithm>
#include <utility>

#include "base/Log.h"
#include "base/PlatformWords.h"
#include "render/RendererError.h"

namespace veloria {

namespace {

constexpr const char* alertTitle = "Veloria could not start";
constexpr int maximumRecoveryAttempts = 20;
/// Panels and compositors that start together with us need a moment before they can be looked at.
constexpr double hintDelay = 2.0;

std::string noDeviceText() {
  return "This " + std::string(machineName) + " has no " + std::string(gpuSystemName) +
         " device, so Veloria cannot run.";
}

ScreenStatus screenStatus(const NimbraWindow& window, const NimbraRenderer& renderer) {
  const StripGeometry& geometry = window.geometry();
  const RenderStats::Figures figures = renderer.figures();
  return {.name = window.screen().name,
          .frame = geometry.windowFrame,
          .menuBarHeight = geometry.menuBarHeight,
          .notch = geometry.notch,
          .scale = geometry.backingScale,
          .gridWidth = figures.gridW,
          .gridHeight = figures.gridH,
          .fps = figures.frameIntervalAvg > 0 ? 1 / figures.frameIntervalAvg : 0,
          .gpuMs = figures.gpuMsAvg};
}

AudioStatus audioStatus(const AudioSource* audio) {
  if (audio == nullptr) return {};
  return {audio->isRunning(), audio->lastError(), audio->bands()};
}

std::optional<WeatherStatus> weatherStatus(const WeatherSource& weather) {
  if (!weather.hasReadings() && !weather.lastError()) return std::nullopt;
  return WeatherStatus{weather.temp(),     weather.wind(), weather.gust(),
                       weather.cloud(),    weather.rain(), weather.hasReadings() ? weather.readout() : std::string(),
                       weather.lastError()};
}

}  // namespace

std::vector<Screen> targetScreens(const NimbraConfig& config, const std::vector<Screen>& screens) {
  if (config.allDisplays || screens.empty()) return screens;
  return {screens.front()};
}

ChangePlan planChange(const std::optional<NimbraConfig>& last, const NimbraConfig& now) {
  if (!last) return {true, true, true};
  ChangePlan plan;
  plan.recompile = last->visualizer != now.visualizer || last->customScript != now.customScript ||
                   last->matchWallpaper != now.matchWallpaper || last->enabled != now.enabled;
  plan.rebuildWindows = last->allDisplays != now.allDisplays || last->layerMode != now.layerMode ||
                        last->extraHeight != now.extraHeight || last->notchMode != now.notchMode ||
                        last->notchPadding != now.notchPadding || last->hdrGlow != now.hdrGlow ||
                        last->framesPerSecond != now.framesPerSecond;
  plan.resizeGrids = last->quality != now.quality || last->verticalStretch != now.verticalStretch;
  return plan;
}

AppDelegate::AppDelegate(AppServices services) : services_(std::move(services)) {}

AppDelegate::~AppDelegate() {
  settingsSubscription_.cancel();
  services_.driver->onConfig = nullptr;
  services_.screens->setChangeHandler(nullptr);
  windows_.clear();
  renderers_.clear();
  library_.reset();
}

bool AppDelegate::startGpu(std::string& problem) {
  try {
    device_ = services_.makeDevice();
  } catch (const gpu::DeviceError& error) {
    NimbraLog::debug(error.what());
  }
  if (device_ == nullptr) {
    problem = noDeviceText();
    return false;
  }
  try {
    library_ = loadShaderLibrary(*device_, services_.shaderLibraries);
  } catch (const std::runtime_error& error) {
    problem = error.what();
    return false;
  }
  return true;
}

void AppDelegate::didFinishLaunching() {
  std::string problem;
  if (!startGpu(problem)) {
    services_.alert(alertTitle, problem);
    services_.terminate(true);
    return;
  }
  services_.driver->onConfig = [this](const NimbraConfig& driven) {
    for (const auto& [number, renderer] : renderers_) renderer->config = driven;
  };
  services_.driver->recompile();
  services_.screens->setChangeHandler([this] { rebuildWindows(); });
  settingsSubscription_ = services_.settings->subscribe([this](const NimbraConfig& config) { configChanged(config); });
  rebuildWindows();
}

void AppDelegate::willTerminate() {
  for (const auto& [number, window] : windows_) window->setRendering(false);
}

void AppDelegate::restartSimulation() {
  for (const auto& [number, renderer] : renderers_) renderer->sim().needsClear = true;
}

void AppDelegate::rebuildWindows() {
  if (device_ == nullptr) return;
  const NimbraConfig config = services_.settings->config();
  std::set<std::uint32_t> wanted;
  for (const Screen& screen : targetScreens(config, services_.screens->screens())) {
    wanted.insert(screen.number);
    const auto existing = windows_.find(screen.number);
    if (existing != windows_.end()) {
      existing->second->apply(config, screen);
    } else {
      makeWindow(screen, config);
    }
  }
  removeWindows(wanted);
  updateRenderingState();
  hintTimer_ = services_.timers->repeating(hintDelay, 0.5, [this] {
    hintTimer_.reset();
    giveHints();
  });
}

void AppDelegate::makeWindow(const Screen& screen, const NimbraConfig& config) {
  try {
    auto renderer = std::make_shared<NimbraRenderer>(*device_, *library_);
    renderer->config = config;
    auto window = std::make_unique<NimbraWindow>(
        services_.panels->makePanel(screen), renderer, screen, config,
        NimbraWindow::Options{services_.environment("NIMBRA_DEBUG_LEVEL"), [this] { deviceLost(); }});
    renderers_[screen.number] = std::move(renderer);
    windows_[screen.number] = std::move(window);
  } catch (const std::runtime_error& error) {
    systemLog(std::string("Veloria: renderer init failed: ") + error.what());
  }
}

void AppDelegate::removeWindows(const std::set<std::uint32_t>& keep) {
  std::erase_if(windows_, [&](const auto& entry) { return !keep.contains(entry.first); });
  std::erase_if(renderers_, [&](const auto& entry) { return !keep.contains(entry.first); });
}

void AppDelegate::configChanged(const NimbraConfig& config) {
  const ChangePlan plan = planChange(lastConfig_, config);
  if (plan.recompile) services_.driver->recompile();
  if (plan.rebuildWindows) rebuildWindows();
  if (plan.resizeGrids) {
    for (const auto& [number, renderer] : renderers_) {
      if (renderer->drawableSize().width < 1) continue;
      renderer->config.quality = config.quality;
      renderer->config.verticalStretch = config.verticalStretch;
      renderer->resizeSimGrid(renderer->drawableSize());
    }
  }
  updateRenderingState();
  lastConfig_ = config;
}

bool AppDelegate::shouldRender() const {
  return services_.settings->config().enabled;
}

void AppDelegate::updateRenderingState() {
  const bool rendering = shouldRender() && device_ != nullptr;
  NimbraLog::debugf("rendering=%s windows=%zu renderers=%zu", rendering ? "true" : "false", windows_.size(),
                    renderers_.size());
  if (rendering) {
    services_.driver->resume();
  } else {
    services_.driver->suspend();
  }
  for (const auto& [number, window] : windows_) window->setRendering(rendering);
}

void AppDelegate::deviceLost() {
  if (recovery_) return;
  recoveryAttempts_ = 0;
  recovery_ = services_.timers->repeating(0.1, 0, [this] { recoverDevice(); });
}

void AppDelegate::recoverDevice() {
  windows_.clear();
  renderers_.clear();
  library_.reset();
  device_.reset();
  std::string problem;
  if (startGpu(problem)) {
    recovery_.reset();
    rebuildWindows();
    return;
  }
  device_.reset();
  const double pause = std::min(1.0, 0.1 * (1 << std::min(++recoveryAttempts_, 4)));
  if (recoveryAttempts_ < maximumRecoveryAttempts) {
    recovery_ = services_.timers->repeating(pause, 0, [this] { recoverDevice(); });
    return;
  }
  recovery_.reset();
  services_.alert("Veloria lost the GPU", problem);
  services_.terminate(true);
}

std::string AppDelegate::hintFor(const NimbraWindow& window) const {
  // A bleed below the bar is seen whatever the panel is like.
  const StripGeometry& geometry = window.geometry();
  if (geometry.windowFrame.height > geometry.menuBarHeight + 0.5) return {};
  return services_.panels->visibilityHint(window.screen(), window.level());
}

std::string AppDelegate::reasonForDarkness() const {
  if (device_ == nullptr) return "the GPU was lost and is not back yet";
  if (!shouldRender()) return "it is paused; 'nimbra resume' goes on";
  if (windows_.empty()) return "there is no screen to draw on";
  return {};
}

AppStatus AppDelegate::status() const {
  const NimbraConfig& config = services_.settings->config();
  AppStatus status;
  status.reason = reasonForDarkness();
  status.rendering = status.reason.empty();
  status.visualizer = config.visualizer;
  status.layer = config.layerMode;
  status.backend = services_.backendName;
  if (device_ != nullptr) status.device = device_->name();
  for (const auto& [number, window] : windows_) {
    status.screens.push_back(screenStatus(*window, *renderers_.at(number)));
    if (status.hint.empty() && status.rendering) status.hint = hintFor(*window);
  }
  status.scriptError = services_.driver->scriptError();
  status.audio = audioStatus(services_.driver->audio());
  status.weather = weatherStatus(services_.driver->weather());
  return status;
}

void AppDelegate::giveHints() {
  if (!shouldRender()) return;
  for (const auto& [number, window] : windows_) {
    const std::string text = hintFor(*window);
    if (!text.empty() && hintsGiven_.insert(text).second) services_.hint(text);
  }
}

}  // namespace veloria
