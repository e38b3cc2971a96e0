#include "platform/linux/wayland/WaylandBand.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/Log.h"
#include "base/MediaClock.h"
#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

constexpr double highestRate = 240;
constexpr double lowestRate = 1;
constexpr double defaultRate = 60;
constexpr double shortestWait = 0.001;
constexpr double afterClosing = 1;
constexpr double atOnce = 0.001;
constexpr double longestDrawing = 0.1;
constexpr double highestPanel = 65535;

double usableRate(double rate) {
  return rate > 0 ? std::clamp(rate, lowestRate, highestRate) : defaultRate;
}

std::uint32_t wholePoints(double height) {
  return static_cast<std::uint32_t>(std::lround(height > 0 ? std::clamp(height, 1.0, highestPanel) : 0));
}

// As compositors round a surface's box.
std::uint32_t pixels(std::uint32_t points, double scale) {
  return static_cast<std::uint32_t>(std::lround(std::min(points * scale, highestPanel)));
}

}  // namespace

const wl_callback_listener WaylandBand::frameListener = {
    .done = [](void* data, wl_callback*, std::uint32_t) { static_cast<WaylandBand*>(data)->frameAllowed(); }};

WaylandBand::WaylandBand(WaylandConnection& connection, WaylandScreenProvider& screens, WallpaperPrograms& wallpapers,
                         LayerStacking stacking, std::uint32_t screenNumber, WaylandSurfaceMaker makeSurface)
    : connection_(connection),
      screens_(screens),
      wallpapers_(wallpapers),
      stacking_(stacking),
      screenNumber_(screenNumber),
      makeSurface_(std::move(makeSurface)) {
  refresh_ = screens_.onRefresh([this] { update(); });
}

WaylandBand::~WaylandBand() {
  hide();
}

void WaylandBand::setFrame(const Rect& frame, double scale) {
  const std::uint32_t height = wholePoints(frame.height);
  const PanelEdge edge = edgeOf(frame);
  if (height == height_ && edge == edge_ && scale == scale_) return;
  // Without a viewport the buffers that are still under way would not fit a new scale.
  if (height != height_ || edge != edge_ || !viewport_) hide();
  height_ = height;
  edge_ = edge;
  scale_ = scale > 0 && std::isfinite(scale) ? scale : 1;
  update();
  configureSurface();
}

PanelEdge WaylandBand::edgeOf(const Rect& frame) const {
  for (const Screen& screen : screens_.screens()) {
    if (screen.number == screenNumber_) return screen.edgeOf(frame);
  }
  return edge_;
}

void WaylandBand::setLevel(OverlayLevel level) {
  if (level == level_) return;
  level_ = level;
  hide();
  update();
}

void WaylandBand::setPixelFormat(gpu::PixelFormat wanted) {
  wantedFormat_ = wanted;
  configureSurface();
}

void WaylandBand::setPreferredFramesPerSecond(double rate) {
  pacing_.setRate(usableRate(rate));
}

void WaylandBand::setPaused(bool paused) {
  paused_ = paused;
  update();
}

void WaylandBand::setDrawHandler(std::function<void()> handler) {
  draw_ = handler ? std::make_shared<std::function<void()>>(std::move(handler)) : nullptr;
  scheduleFrame();
}

void WaylandBand::orderFront() {
  wanted_ = true;
  update();
}

void WaylandBand::orderOut() {
  wanted_ = false;
  update();
}

gpu::Size WaylandBand::drawableSize() const {
  return {pixels(givenWidth_, scale_), pixels(givenHeight_, scale_)};
}

gpu::PixelFormat WaylandBand::colorPixelFormat() const {
  return surface_ ? surface_->format() : gpu::PixelFormat::invalid;
}

gpu::Drawable* WaylandBand::currentDrawable() {
  if (!surface_ || givenWidth_ == 0 || (callback_ && !drawing_)) return nullptr;
  gpu::Drawable* drawable = surface_->nextDrawable();
  if (drawable != nullptr && !callback_) {
    callback_.reset(wl_surface_frame(layer_->surface()));
    wl_callback_add_listener(callback_.get(), &frameListener, this);
  }
  return drawable;
}

void WaylandBand::update() {
  const bool wanted = wanted_ && height_ > 0 && !connection_.isBroken();
  // The output may have gone and come back as another one under the same name.
  if (layer_ && shownOn_.lock() != screens_.output(screenNumber_)) hide();
  if (wanted && !layer_) show();
  if (!wanted && layer_) hide();
  watchOthers();
  scheduleFrame();
}

void WaylandBand::show() {
  const auto output = screens_.output(screenNumber_);
  if (!output || connection_.layerShell() == nullptr) return;
  remaking_.reset();
  shownOn_ = output;
  const LayerPlacement placement{
      .layer = layer(),
      .anchors = static_cast<std::uint32_t>(edge_ == PanelEdge::top ? ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP
                                                                    : ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM) |
                 ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT,
      .width = 0,
      .height = height_,
      .exclusiveZone = -1,
  };
  layer_ = std::make_unique<LayerSurface>(
      connection_, output->raw(), placement,
      LayerSurface::Handlers{[this](std::uint32_t width, std::uint32_t height) { configured(width, height); },
                             [this] { closed(); }});
  if (connection_.viewporter() != nullptr) {
    viewport_.reset(wp_viewporter_get_viewport(connection_.viewporter(), layer_->surface()));
  }
}

// What is drawn into goes before what it is drawn for.
void WaylandBand::hide() {
  nextFrame_.reset();
  late_.reset();
  callback_.reset();
  asked_ = false;
  surface_.reset();
  viewport_.reset();
  layer_.reset();
  givenWidth_ = 0;
  givenHeight_ = 0;
  connection_.flush();
}

void WaylandBand::remakeAfter(double seconds) {
  remaking_ = connection_.timers().after(seconds, [this] {
    hide();
    update();
  });
}

void WaylandBand::configured(std::uint32_t width, std::uint32_t height) {
  givenWidth_ = width;
  givenHeight_ = height == 0 ? height_ : height;
  if (!surface_ && makeSurface_) {
    try {
      surface_ = makeSurface_(connection_.raw(), layer_->surface());
    } catch (const std::exception& error) {
      systemLog(std::string("Veloria: an overlay can't be drawn into: ") + error.what());
    }
  }
  configureSurface();
  scheduleFrame();
}

void WaylandBand::closed() {
  hide();
  if (wanted_ && closedAttempts_.spend(mediaTime())) remakeAfter(afterClosing);
}

void WaylandBand::configureSurface() {
  if (!surface_ || givenWidth_ == 0 || givenHeight_ == 0) return;
  if (viewport_) {
    wp_viewport_set_destination(viewport_.get(), static_cast<std::int32_t>(givenWidth_),
                                static_cast<std::int32_t>(givenHeight_));
  } else {
    wl_surface_set_buffer_scale(layer_->surface(), static_cast<std::int32_t>(std::lround(scale_)));
  }
  surface_->configure(drawableSize(), wantedFormat_);
}

std::uint32_t WaylandBand::layer() const {
  if (level_ == OverlayLevel::aboveMenuBar) return ZWLR_LAYER_SHELL_V1_LAYER_OVERLAY;
  return stacking_ == LayerStacking::newestLowest ? ZWLR_LAYER_SHELL_V1_LAYER_BOTTOM
                                                  : ZWLR_LAYER_SHELL_V1_LAYER_BACKGROUND;
}

void WaylandBand::watchOthers() {
  const bool watch = layer_ && !paused_ && level_ == OverlayLevel::desktop;
  if (!watch) return others_.reset();
  if (others_) return;
  others_ = stacking_ == LayerStacking::newestLowest
                ? screens_.onPanelsMoved([this] { remakeAfter(atOnce); })
                : wallpapers_.onStart([this](double delay) { remakeAfter(delay); });
}

bool WaylandBand::ready() const {
  return surface_ && givenWidth_ > 0 && !paused_ && draw_ && !callback_ && !connection_.isBroken();
}

void WaylandBand::scheduleFrame() {
  if (!ready()) return nextFrame_.reset();
  if (nextFrame_) return;
  const double wait = std::max(pacing_.wait(mediaTime()), shortestWait);
  nextFrame_ = connection_.timers().after(wait, [this] { drawFrame(); });
}

void WaylandBand::frameAllowed() {
  callback_.reset();
  late_.reset();
  asked_ = true;
  if (ready() && pacing_.due(mediaTime())) {
    drawFrame();
  } else {
    scheduleFrame();
  }
}

void WaylandBand::drawFrame() {
  nextFrame_.reset();
  if (!ready()) return;
  pacing_.drawn(mediaTime());
  const auto draw = draw_;
  const std::weak_ptr<int> alive = alive_;
  WaylandConnection& connection = connection_;
  drawing_ = true;
  (*draw)();
  if (alive.expired()) return;
  drawing_ = false;
  // The request for the next frame goes with the picture, which a device may show later.
  if (callback_) late_ = connection.timers().after(longestDrawing, [this] { pictureIsLate(); });
  scheduleFrame();
  connection.dispatchQueued();  // drawing reads the connection
}

// If none comes, the compositor would never ask; it never does for a surface that has shown nothing yet.
void WaylandBand::pictureIsLate() {
  if (!asked_ && firstAttempts_.spend(mediaTime())) {
    callback_.reset();
    return scheduleFrame();
  }
  wl_surface_commit(layer_->surface());
  connection_.flush();
}

WaylandBandFactory::WaylandBandFactory(WaylandConnection& connection, WaylandScreenProvider& screens,
                                       LayerStacking stacking, WaylandSurfaceMaker makeSurface)
    : connection_(connection),
      screens_(screens),
      stacking_(stacking),
      makeSurface_(std::move(makeSurface)),
      wallpapers_(connection.timers()) {
  if (connection_.layerShell() == nullptr) {
    throw std::runtime_error(
        "The Wayland compositor lacks the layer shell (wlr-layer-shell), without which nothing can be painted under or "
        "over its panel.");
  }
}

std::unique_ptr<OverlayPanel> WaylandBandFactory::makePanel(const Screen& screen) {
  auto panel =
      std::make_unique<WaylandBand>(connection_, screens_, wallpapers_, stacking_, screen.number, makeSurface_);
  panel->setFrame(screen.frame, screen.backingScale);
  return panel;
}

Visibility WaylandBandFactory::visibility(const Screen& screen, const Rect& band, OverlayLevel level) {
  using Kind = Visibility::Kind;
  if (level != OverlayLevel::desktop) return {};
  if (!screens_.panelsTold()) return {Kind::mayBeHidden, unreportedPanelHint()};
  const PanelEdge edge = screen.edgeOf(band);
  return screen.reserved(edge) > 0 ? Visibility{Kind::mayBeHidden, unknownPanelHint(edge)} : Visibility{};
}

}  // namespace veloria
