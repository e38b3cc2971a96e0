#include "app/AppDelegate.h"

#include <algorithm>
#include <utility>

#include "app/FirstMinute.h"
#include "base/Log.h"
#include "base/PlatformWords.h"
#include "render/RendererError.h"

namespace veloria {

namespace {

constexpr const char* alertTitle = "Veloria could not start";
constexpr int maximumRecoveryAttempts = 20;
constexpr double steadySeconds = 10;  // after these, a GPU that came back counts as sound
/// Panels and compositors that start with us need a moment before they can be inspected.
constexpr double hintDelay = 2.0;
/// Panels change without telling. A band that comes into view has to be lit soon; one that is drawn in vain may wait.
constexpr double hiddenPollSeconds = 1;
constexpr double shownPollSeconds = 5;
constexpr double pollTolerance = 0.5;
/// How far outside a window, in points, the pointer still counts; further if it may act from outside.
constexpr double pointerMargin = 40;
constexpr double widePointerMargin = 120;

/// Who sets one of them wants what it says.
constexpr const char* variablesThatChoose[] = {"NIMBRA_VISUALIZER", "NIMBRA_LAYER", "NIMBRA_HDR", "NIMBRA_SCRIPT",
                                               "NIMBRA_DEBUG_LEVEL"};

ScreenStatus screenStatus(const NimbraWindow& window, const NimbraRenderer& renderer) {
  const StripGeometry& geometry = window.geometry();
  const RenderStats::Figures figures = renderer.figures();
  return {.name = window.screen().name,
          .frame = geometry.windowFrame,
          .edge = geometry.edge,
          .panelEdge = window.screen().panelEdge,
          .menuBarHeight = geometry.menuBarHeight,
          .notch = geometry.notch,
          .scale = geometry.backingScale,
          .gridWidth = figures.gridW,
          .gridHeight = figures.gridH,
          .wantedFps = window.wantedRate(),
          .rateDivisor = window.rateDivisor(),
          .fps = figures.fps,
          .gpuMs = figures.gpuMsAvg};
}

bool isEightBit(gpu::PixelFormat format) {
  return format == gpu::PixelFormat::bgra8Unorm || format == gpu::PixelFormat::rgba8Unorm;
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

AppDelegate::AppDelegate(AppServices services) : services_(std::move(services)) {
  const auto isSet = [this](const char* variable) { return services_.environment(variable).has_value(); };
  firstStart_ = services_.settings->isNew() &&
                std::none_of(std::begin(variablesThatChoose), std::end(variablesThatChoose), isSet);
}

AppDelegate::~AppDelegate() {
  settingsSubscription_.cancel();
  services_.driver->onConfig = nullptr;
  services_.screens->setChangeHandler(nullptr);
  if (services_.activity != nullptr) services_.activity->onChange = nullptr;
  if (services_.pointer != nullptr) services_.pointer->onSample = nullptr;
  capture_.reset();
  windows_.clear();
  renderers_.clear();
  library_.reset();
}

std::string AppDelegate::noDeviceText(const std::string& problem) const {
  const auto named = services_.environment("NIMBRA_GPU");
  if (named && !named->empty()) return "Veloria can't use the GPU that NIMBRA_GPU names: " + problem + ".";
  return "This " + std::string(machineName) + " has no " + std::string(gpuSystemName) +
         " device, so Veloria cannot run.";
}

std::optional<AppDelegate::GpuProblem> AppDelegate::makeGpu(
    const std::function<std::unique_ptr<gpu::Device>()>& makeDevice) {
  try {
    device_ = makeDevice();
    library_ = loadShaderLibrary(*device_, services_.shaderLibraries);
  } catch (const gpu::DeviceError& error) {
    NimbraLog::debug(error.what());
    device_.reset();
    return GpuProblem{noDeviceText(error.what()), error.what()};
  } catch (const std::runtime_error& error) {
    device_.reset();
    return GpuProblem{error.what(), {}};
  }
  whySubstitute_.clear();
  if (services_.captureStream != nullptr)
    capture_ = std::make_unique<MenuBarCapture>(*device_, *services_.captureStream);
  return std::nullopt;
}

bool AppDelegate::makeSubstitute(const GpuProblem& problem, const std::string& reason) {
  if (problem.ofDevice.empty() || makeGpu(services_.makeSubstitute)) return false;
  whySubstitute_ = reason;
  NimbraLog::debug("the CPU draws: " + reason);
  return true;
}

bool AppDelegate::startGpu() {
  const auto problem = makeGpu(services_.makeDevice);
  if (!problem || makeSubstitute(*problem, problem->ofDevice)) return true;
  services_.alert(alertTitle, problem->text);
  return false;
}

void AppDelegate::didFinishLaunching() {
  services_.driver->onConfig = [this](const NimbraConfig& driven) {
    for (const auto& [number, renderer] : renderers_) renderer->config = driven;
  };
  services_.driver->recompile();
  if (services_.activity != nullptr) services_.activity->onChange = [this] { updateRenderingState(); };
  if (services_.pointer != nullptr) {
    services_.pointer->onSample = [this](const auto& point, Point velocity) { distributePointer(point, velocity); };
  }
  services_.screens->setChangeHandler([this] { rebuildWindows(); });
  settingsSubscription_ = services_.settings->subscribe([this](const NimbraConfig& config) { configChanged(config); });
  rebuildWindows();
}

void AppDelegate::willTerminate() {
  if (capture_ != nullptr) capture_->stop();
  if (services_.clearing != nullptr) services_.clearing->setWanted(false);
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
      existing->second->apply(config, services_.settings->extra().edge, screen);
    } else {
      makeWindow(screen, config);
    }
  }
  removeWindows(wanted);
  hidden_ = hiddenWindows(false);
  setRendering(shouldRender() && device_ != nullptr);
  hintTimer_ = services_.timers->after(
      hintDelay, [this] { panelsSettled(); }, 0.5);
}

void AppDelegate::makeWindow(const Screen& screen, const NimbraConfig& config) {
  try {
    auto renderer = std::make_shared<NimbraRenderer>(*device_, *library_);
    renderer->config = config;
    auto window = std::make_unique<NimbraWindow>(
        services_.panels->makePanel(screen), renderer, screen, config,
        NimbraWindow::Options{services_.environment("NIMBRA_DEBUG_LEVEL"), services_.settings->extra().edge,
                              [this] { deviceLost(); }});
    window->setRateDivisor(rate_.divisor());
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
  ChangePlan plan = planChange(lastConfig_, config);
  plan.rebuildWindows = plan.rebuildWindows || lastExtra_ != services_.settings->extra();
  lastExtra_ = services_.settings->extra();
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
  if (services_.activity != nullptr) services_.activity->recompute();
  updateRenderingState();
  lastConfig_ = config;
}

bool AppDelegate::shouldRender() const {
  if (services_.activity != nullptr) return services_.activity->shouldRender();
  return services_.settings->config().enabled;
}

/// Screens may have changed unseen while nothing was drawn, so the windows are laid out anew before the first frame.
void AppDelegate::updateRenderingState() {
  const bool rendering = shouldRender() && device_ != nullptr;
  if (rendering && !rendering_) return rebuildWindows();
  setRendering(rendering);
}

void AppDelegate::setRendering(bool rendering) {
  rendering_ = rendering;
  drawing_ = rendering && (windows_.empty() || hidden_.size() < windows_.size());
  NimbraLog::debugf("rendering=%s windows=%zu renderers=%zu", drawing_ ? "true" : "false", windows_.size(),
                    renderers_.size());
  if (drawing_) {
    services_.driver->resume();
  } else {
    services_.driver->suspend();
  }
  for (const auto& [number, window] : windows_) window->setRendering(rendering && !hidden_.contains(number));
  if (!drawing_) {
    rateTimer_.reset();
  } else if (rateTimer_ == nullptr) {
    rateTimer_ = services_.timers->repeating(RatePlan::period, RatePlan::period / 4, [this] { judgeRate(); });
  }
  updatePointerInterest();
  updateCapture();
  watchVisibility();
}

void AppDelegate::judgeRate() {
  double load = 0;
  for (const auto& [number, window] : windows_) {
    if (hidden_.contains(number)) continue;
    const RenderStats::Figures figures = renderers_.at(number)->figures();
    if (figures.fps > 0) load += figures.gpuMsAvg / 1000 * window->wantedRate();
  }
  if (!rate_.judge(load)) return;
  NimbraLog::debugf("frames are drawn at 1/%d of the wanted rate", rate_.divisor());
  for (const auto& [number, window] : windows_) window->setRateDivisor(rate_.divisor());
}

Visibility AppDelegate::visibilityOf(const NimbraWindow& window) const {
  // A bleed beside the panel is visible whatever the panel is like.
  const StripGeometry& geometry = window.geometry();
  if (geometry.windowFrame.height > geometry.menuBarHeight + 0.5) return {};
  const bool behind = window.level() == OverlayLevel::desktop;
  if (behind && services_.clearing != nullptr && services_.clearing->letsLightThrough()) return {};
  return services_.panels->visibility(window.screen(), geometry.windowFrame, window.level());
}

/// The windows of those that are hidden already, or of all, that panels certainly cover.
std::set<std::uint32_t> AppDelegate::hiddenWindows(bool newOnes) const {
  std::set<std::uint32_t> hidden;
  for (const auto& [number, window] : windows_) {
    if (!newOnes && !hidden_.contains(number)) continue;
    if (visibilityOf(*window).kind == Visibility::Kind::hidden) hidden.insert(number);
  }
  return hidden;
}

void AppDelegate::judgeVisibility(bool mayHide) {
  if (!rendering_) return;
  auto hidden = hiddenWindows(mayHide);
  if (hidden == hidden_) return;
  hidden_ = std::move(hidden);
  setRendering(rendering_);
}

/// Only a strip behind panels can be hidden. The panel is told whether such a strip wants to be seen.
void AppDelegate::watchVisibility() {
  const bool behind = rendering_ && std::any_of(windows_.begin(), windows_.end(), [](const auto& entry) {
                        return entry.second->level() == OverlayLevel::desktop;
                      });
  if (services_.clearing != nullptr) services_.clearing->setWanted(behind);
  visibilityTimer_.reset();
  if (!behind || services_.settings->config().layerMode == LayerMode::desktopFull) return;
  visibilityTimer_ = services_.timers->repeating(hidden_.empty() ? shownPollSeconds : hiddenPollSeconds, pollTolerance,
                                                 [this] { judgeVisibility(true); });
}

void AppDelegate::panelsChanged() {
  judgeVisibility(false);
  updateCapture();
  hintTimer_ = services_.timers->after(
      hintDelay, [this] { panelsSettled(); }, 0.5);
}

void AppDelegate::updatePointerInterest() {
  if (services_.pointer == nullptr) return;
  const NimbraConfig& config = services_.settings->config();
  const bool on = config.enabled && config.pointerMode != PointerMode::none && drawing_;
  Rect interest;
  for (const auto& [number, window] : windows_) interest = interest.united(window->geometry().windowFrame);
  services_.pointer->interestRect = interest;
  services_.pointer->setEnabled(on);
  if (!on) distributePointer(std::nullopt, {});
}

void AppDelegate::distributePointer(const std::optional<Point>& point, Point velocity) {
  const double margin = services_.settings->config().pointerOnlyInStrip ? pointerMargin : widePointerMargin;
  for (const auto& [number, window] : windows_) {
    const Rect& frame = window->geometry().windowFrame;
    PointerState& pointer = renderers_.at(number)->pointer;
    if (point && frame.inset(-margin, -margin).contains(*point)) {
      pointer = {Point{point->x - frame.minX(), frame.maxY() - point->y}, velocity, true};
    } else {
      pointer = {};
    }
  }
}

bool AppDelegate::wantsCapture() const {
  const NimbraConfig& config = services_.settings->config();
  return config.enabled && config.preserveMenuBarText && config.layerMode == LayerMode::aboveMenuBar && shouldRender();
}

void AppDelegate::updateCapture() {
  if (capture_ == nullptr) return;
  const auto screens = targetScreens(services_.settings->config(), services_.screens->screens());
  const auto window = screens.empty() ? windows_.end() : windows_.find(screens.front().number);
  if (!wantsCapture() || window == windows_.end()) {
    if (capture_->isRunning()) capture_->stop();
    return;
  }
  const Screen& screen = screens.front();
  const Rect& frame = window->second->geometry().windowFrame;
  capture_->start(screen.number,
                  {frame.minX() - screen.frame.minX(), screen.frame.maxY() - frame.maxY(), frame.width, frame.height},
                  screen.backingScale);
  for (const auto& [number, renderer] : renderers_) {
    renderer->backdrop = number == screen.number ? capture_->box() : nullptr;
  }
}

CaptureStatus AppDelegate::captureStatus() const {
  if (!wantsCapture()) return {};
  if (capture_ != nullptr) return {capture_->isRunning(), capture_->lastError()};
  if (services_.captureProblem.empty()) return {};
  return {false, services_.captureProblem};
}

void AppDelegate::deviceLost() {
  if (recovery_) return;
  steady_.reset();
  recovery_ = services_.timers->repeating(0.1, 0, [this] { recoverDevice(); });
}

void AppDelegate::recoverDevice() {
  windows_.clear();
  capture_.reset();
  renderers_.clear();
  library_.reset();
  device_.reset();
  const std::string unsound = "it was lost again and again";
  const auto problem = recoveryAttempts_ < maximumRecoveryAttempts ? makeGpu(services_.makeDevice)
                                                                   : GpuProblem{noDeviceText(unsound), unsound};
  const double pause = std::min(1.0, 0.1 * (1 << std::min(++recoveryAttempts_, 4)));
  if (problem && recoveryAttempts_ < maximumRecoveryAttempts) {
    recovery_ = services_.timers->repeating(pause, 0, [this] { recoverDevice(); });
    return;
  }
  recovery_.reset();
  steady_ = services_.timers->after(steadySeconds, [this] { recoveryAttempts_ = 0; });
  if (!problem || makeSubstitute(*problem, "the GPU was lost")) return rebuildWindows();
  services_.alert("Veloria lost the GPU", problem->text);
  services_.terminate();
}

std::string AppDelegate::offerText() const {
  if (services_.clearing == nullptr) return {};
  const auto offer = services_.clearing->offer();
  std::string text;
  if (offer.way == PanelClearing::Way::oneClick || offer.way == PanelClearing::Way::afterAsking)
    text = " Or choose \"Let the light through the panel\" there.";
  if (offer.way != PanelClearing::Way::none && !offer.text.empty()) text += ' ' + offer.text;
  return text;
}

std::string AppDelegate::reasonForDarkness() const {
  if (device_ == nullptr) return "the GPU was lost and is not back yet";
  if (!shouldRender() && services_.activity != nullptr) return services_.activity->reason();
  if (!shouldRender()) return "it is switched off";
  if (windows_.empty()) return "there is no screen to draw on";
  if (!drawing_ && rendering_) {
    const PanelEdge edge = windows_.begin()->second->geometry().edge;
    return std::string("the panel at the ") + nameOf(edge) + " of the screen is opaque and covers the band";
  }
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
  if (!whySubstitute_.empty()) status.device += " (" + whySubstitute_ + ")";
  for (const auto& [number, window] : windows_) {
    if (config.hdrGlow && isEightBit(window->pixelFormat())) status.hdr = "the band is drawn with 8 bits a colour here";
    status.screens.push_back(screenStatus(*window, *renderers_.at(number)));
    if (status.hint.empty() && rendering_) status.hint = visibilityOf(*window).hint;
  }
  if (!status.hint.empty()) status.hint += offerText();
  if (services_.clearing != nullptr) status.panelClear = services_.clearing->letsLightThrough();
  status.scriptError = services_.driver->scriptError();
  status.audio = audioStatus(services_.driver->audio());
  status.weather = weatherStatus(services_.driver->weather());
  const bool takesColors = config.matchWallpaper || services_.driver->compiled().paletteFromWallpaper;
  if (takesColors && services_.pictureError) status.pictureError = services_.pictureError();
  status.capture = captureStatus();
  if (services_.pointer != nullptr) status.pointer = {services_.pointer->available(), services_.pointer->reason()};
  return status;
}

void AppDelegate::panelsSettled() {
  if (!rendering_) return;
  takeFirstLayer();
  for (const auto& [number, window] : windows_) {
    const std::string text = visibilityOf(*window).hint;
    if (!text.empty() && hintsGiven_.insert(text).second) services_.hint(text);
  }
  judgeVisibility(true);
}

/// Without a panel nothing is decided: it may start after us.
void AppDelegate::takeFirstLayer() {
  const auto screens = services_.screens->screens();
  const auto window = screens.empty() ? windows_.end() : windows_.find(screens.front().number);
  if (!firstStart_ || window == windows_.end()) return;
  const NimbraConfig& config = services_.settings->config();
  const Visibility behind = visibilityOf(*window->second);
  const bool untouched = config == NimbraConfig();
  if (untouched && behind.kind == Visibility::Kind::seen && !screens.front().panelEdge) return;
  firstStart_ = false;
  if (!untouched) return;
  const Rect& band = window->second->geometry().windowFrame;
  const NimbraConfig chosen =
      firstStartConfig({.behind = behind.kind,
                        .above = services_.panels->visibility(screens.front(), band, OverlayLevel::aboveMenuBar).kind,
                        .textCanBeKept = services_.textCanBeKept && services_.textCanBeKept()});
  services_.settings->setConfig(chosen);
  services_.settings->keep();
  if (chosen != NimbraConfig() && services_.firstLayerTaken) services_.firstLayerTaken();
}

}  // namespace veloria
