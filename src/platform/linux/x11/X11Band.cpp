#include "platform/linux/x11/X11Band.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/Log.h"
#include "base/MediaClock.h"
#include "platform/linux/x11/X11WindowManager.h"

namespace veloria {

namespace {

constexpr double withdrawalPatience = 0.5;
constexpr double windowManagerSettles = 0.3;
constexpr double highestRate = 240;
constexpr double lowestRate = 1;
constexpr double defaultRate = 60;
constexpr std::uint8_t eventCodeMask = 0x7f;
constexpr std::uint32_t wmStateWords = 2;
constexpr std::uint32_t withdrawnState = 0;

double usableRate(double rate) {
  return rate > 0 ? std::clamp(rate, lowestRate, highestRate) : defaultRate;
}

}  // namespace

X11Band::X11Band(X11Connection& connection, X11ScreenProvider& screens, const BandVisual& visual,
                 SurfaceMaker makeSurface)
    : connection_(connection), screens_(screens), visual_(visual), makeSurface_(std::move(makeSurface)) {
  createWindow();
  events_ = connection_.onEvent([this](const xcb_generic_event_t& event) { handle(event); });
  refresh_ = screens_.onRefresh([this] { screensRefreshed(); });
}

X11Band::~X11Band() {
  surface_.reset();
  xcb_destroy_window(connection_.raw(), window_);
  connection_.flush();
}

void X11Band::createWindow() {
  const xcb_window_t window = xcb_generate_id(connection_.raw());
  const std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
  const std::uint32_t events =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_VISIBILITY_CHANGE;
  const std::uint32_t values[] = {0, 0, events, visual_.colormap};
  const auto width = static_cast<std::uint16_t>(std::max(place_.width, 1));
  const auto height = static_cast<std::uint16_t>(std::max(place_.height, 1));
  const auto cookie =
      xcb_create_window_checked(connection_.raw(), visual_.depth, window, connection_.root(),
                                static_cast<std::int16_t>(place_.x), static_cast<std::int16_t>(place_.y), width, height,
                                0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_.visual, mask, values);
  const XcbPtr<xcb_generic_error_t> error(xcb_request_check(connection_.raw(), cookie));
  if (error || connection_.isBroken()) throw std::runtime_error("The X server refused an overlay window.");
  window_ = window;
  makeClickThrough(connection_, window_);
  try {
    createSurface();
  } catch (...) {
    xcb_destroy_window(connection_.raw(), window_);
    window_ = XCB_WINDOW_NONE;
    throw;
  }
}

void X11Band::createSurface() {
  surface_ = makeSurface_ ? makeSurface_(connection_.raw(), window_) : nullptr;
  configureSurface();
}

void X11Band::recreate() {
  surface_.reset();
  window_ = XCB_WINDOW_NONE;
  phase_ = Phase::withdrawn;
  managed_ = false;
  withdrawal_.reset();
  remapping_.reset();
  restacking_.reset();
  if (recreateAttempts_.spend(mediaTime())) {
    try {
      createWindow();
    } catch (const std::exception& error) {
      systemLog(std::string("Veloria: an overlay window can't be made again: ") + error.what());
    }
  }
  applyVisibility();
}

void X11Band::setFrame(const Rect& frame, double scale) {
  frame_ = frame;
  scale_ = scale;
  const PixelRect place = screens_.clippedToScreen(screens_.space().toPixels(frame, scale));
  if (place == place_) return;
  place_ = place;
  placeAttempts_.refill();
  configureSurface();
  if (phase_ == Phase::mapped && !place_.empty()) applyPlace();
  applyVisibility();
  connection_.flush();
}

void X11Band::setLevel(OverlayLevel level) {
  if (level == level_) return;
  level_ = level;
  stackAttempts_.refill();
  stateAttempts_.refill();
  remap();
}

void X11Band::setPixelFormat(gpu::PixelFormat wanted) {
  wantedFormat_ = wanted;
  configureSurface();
}

void X11Band::setPreferredFramesPerSecond(double rate) {
  rate_ = usableRate(rate);
  updateTimer();
}

void X11Band::setPaused(bool paused) {
  paused_ = paused;
  updateTimer();
}

void X11Band::setDrawHandler(std::function<void()> handler) {
  draw_ = handler ? std::make_shared<std::function<void()>>(std::move(handler)) : nullptr;
  updateTimer();
}

void X11Band::orderFront() {
  wanted_ = true;
  if (window_ == XCB_WINDOW_NONE) return recreate();
  applyVisibility();
}

void X11Band::orderOut() {
  wanted_ = false;
  applyVisibility();
}

gpu::Size X11Band::drawableSize() const {
  return {static_cast<std::uint32_t>(place_.width), static_cast<std::uint32_t>(place_.height)};
}

gpu::PixelFormat X11Band::colorPixelFormat() const {
  return surface_ ? surface_->format() : gpu::PixelFormat::invalid;
}

gpu::Drawable* X11Band::currentDrawable() {
  return surface_ && phase_ == Phase::mapped ? surface_->nextDrawable() : nullptr;
}

void X11Band::configureSurface() {
  if (surface_) surface_->configure(drawableSize(), wantedFormat_);
}

// The hints come first: a window manager holds a fixed-size window to them.
void X11Band::applyPlace() {
  writePlaceHints(connection_, window_, place_);
  const std::uint16_t mask =
      XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
  const std::uint32_t values[] = {static_cast<std::uint32_t>(place_.x), static_cast<std::uint32_t>(place_.y),
                                  static_cast<std::uint32_t>(place_.width), static_cast<std::uint32_t>(place_.height)};
  xcb_configure_window(connection_.raw(), window_, mask, values);
  scheduleVerification();
}

void X11Band::applyVisibility() {
  const bool show = wanted_ && !place_.empty() && window_ != XCB_WINDOW_NONE;
  if (show && phase_ == Phase::withdrawn) map();
  if (!show && phase_ == Phase::mapped) withdraw();
  updateTimer();
}

void X11Band::map() {
  phase_ = Phase::mapped;
  obscured_ = false;
  writeWindowHints(connection_, window_, level_, place_);
  applyPlace();
  xcb_map_window(connection_.raw(), window_);
  connection_.flush();
}

void X11Band::withdraw() {
  xcb_unmap_window(connection_.raw(), window_);
  announceWithdrawal(connection_, window_);
  phase_ = Phase::withdrawing;
  verification_.reset();
  withdrawal_ = connection_.timers().after(withdrawalPatience, [this] { finishWithdrawing(); });
  readManagedState();
}

void X11Band::finishWithdrawing() {
  phase_ = Phase::withdrawn;
  withdrawal_.reset();
  applyVisibility();
}

void X11Band::remap() {
  remapping_.reset();
  if (phase_ == Phase::mapped) withdraw();
  updateTimer();
}

void X11Band::readManagedState() {
  const auto state = connection_.numbers(window_, X11Atom::wmState, wmStateWords);
  managed_ = !state.empty() && state.front() != withdrawnState;
  if (managed_) makeClickThrough(connection_, window_);
  if (phase_ == Phase::withdrawing && !managed_) finishWithdrawing();
}

void X11Band::updateTimer() {
  const bool run = wanted_ && phase_ == Phase::mapped && !paused_ && !obscured_ && draw_;
  if (!run) {
    frameTimer_.reset();
  } else if (!frameTimer_ || timerRate_ != rate_) {
    timerRate_ = rate_;
    frameTimer_ = connection_.timers().repeating(1 / rate_, 0, [this] { drawFrame(); });
  }
}

void X11Band::drawFrame() {
  const auto draw = draw_;
  const std::weak_ptr<int> alive = alive_;
  X11Connection& connection = connection_;
  (*draw)();
  if (alive.expired()) return;
  connection.dispatchQueued();  // drawing waits for replies on this connection
}

void X11Band::handle(const xcb_generic_event_t& event) {
  switch (event.response_type & eventCodeMask) {
    case XCB_DESTROY_NOTIFY:
      if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == window_) recreate();
      break;
    case XCB_CONFIGURE_NOTIFY:
      if (reinterpret_cast<const xcb_configure_notify_event_t&>(event).window == window_) scheduleVerification();
      break;
    case XCB_REPARENT_NOTIFY:
    case XCB_MAP_NOTIFY:
      scheduleVerification();
      break;
    case XCB_UNMAP_NOTIFY:
      if (reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window == window_) scheduleVerification();
      break;
    case XCB_VISIBILITY_NOTIFY: {
      const auto& change = reinterpret_cast<const xcb_visibility_notify_event_t&>(event);
      if (change.window == window_) handleObscured(change.state == XCB_VISIBILITY_FULLY_OBSCURED);
      break;
    }
    case XCB_PROPERTY_NOTIFY:
      handleProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
      break;
    default:
      break;
  }
}

void X11Band::handleProperty(const xcb_property_notify_event_t& event) {
  if (event.window == connection_.root()) return handleRootProperty(event.atom);
  if (event.window != window_) return;
  if (event.atom == connection_.atom(X11Atom::wmState)) readManagedState();
  if (event.atom == connection_.atom(X11Atom::netWmState)) scheduleVerification();
  if (event.atom == connection_.atom(X11Atom::netWmUserTime)) restackAt(event.time);
}

void X11Band::handleRootProperty(xcb_atom_t changed) {
  if (changed == connection_.atom(X11Atom::netClientListStacking)) scheduleVerification();
  if (changed != connection_.atom(X11Atom::netSupportingWmCheck)) return;
  placeAttempts_.refill();
  stackAttempts_.refill();
  stateAttempts_.refill();
  remapping_ = connection_.timers().after(windowManagerSettles, [this] { remap(); });
}

void X11Band::handleObscured(bool obscured) {
  obscured_ = obscured;
  updateTimer();
}

// The same points may be other pixels now, and a new panel may be in the way.
void X11Band::screensRefreshed() {
  setFrame(frame_, scale_);
  stackAttempts_.refill();
  scheduleVerification();
}

void X11Band::scheduleVerification(double delay) {
  if (phase_ != Phase::mapped || (verification_ && delay >= pendingDelay_)) return;
  pendingDelay_ = delay;
  verification_ = connection_.timers().after(delay, [this] { verify(); });
}

void X11Band::verify() {
  if (phase_ != Phase::mapped || connection_.isBroken()) return;
  makeClickThrough(connection_, window_);
  if (verifyMapped()) {
    verifyPlace();
    verifyStates();
    verifyStacking();
  }
  connection_.flush();
}

// A window manager that is just starting may drop the request, and anybody may unmap the window.
bool X11Band::verifyMapped() {
  const auto attributes =
      connection_.reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(connection_.raw(), window_));
  if (!attributes || attributes->map_state != XCB_MAP_STATE_UNMAPPED) return true;
  if (managed_ || !mapAttempts_.spend(mediaTime())) return false;
  writeWindowHints(connection_, window_, level_, place_);
  xcb_map_window(connection_.raw(), window_);
  scheduleVerification();
  return false;
}

void X11Band::verifyPlace() {
  const auto sizeCookie = xcb_get_geometry(connection_.raw(), window_);
  const auto positionCookie = xcb_translate_coordinates(connection_.raw(), window_, connection_.root(), 0, 0);
  const auto size = connection_.reply(xcb_get_geometry_reply, sizeCookie);
  const auto position = connection_.reply(xcb_translate_coordinates_reply, positionCookie);
  if (!size || !position) return;
  const PixelRect actual{position->dst_x, position->dst_y, size->width, size->height};
  if (actual != place_ && placeAttempts_.spend(mediaTime())) applyPlace();
}

void X11Band::verifyStates() {
  if (managed_ && stateAttempts_.spend(mediaTime())) {
    if (!reassertStates(connection_, window_, level_)) stateAttempts_.refill();
  }
}

void X11Band::verifyStacking() {
  const auto change = neededRestacking(connection_, window_, level_, screens_.panels());
  if (!change) return;
  if (!stackAttempts_.spend(mediaTime())) return scheduleVerification(stackAttempts_.pauseSeconds());
  restacking_ = *change;
  requestUserTimeReport(connection_, window_);
}

// Of windows of one kind, some window managers keep the one on top that a person used last, such as the desktop's icons
// after a click, and ignore the others' requests.
void X11Band::restackAt(xcb_timestamp_t time) {
  const auto change = std::exchange(restacking_, std::nullopt);
  if (!change) return;
  if (managed_) writeUserTime(connection_, window_, time);
  restack(connection_, window_, *change);
  scheduleVerification();
  connection_.flush();
}

}  // namespace veloria
