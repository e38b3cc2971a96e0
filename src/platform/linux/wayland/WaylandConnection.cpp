#include "platform/linux/wayland/WaylandConnection.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "base/MediaClock.h"

namespace veloria {

namespace {

constexpr double flushPause = 0.02;
constexpr std::uint32_t compositorVersion = 4;
constexpr std::uint32_t layerShellVersion = 3;
constexpr std::uint32_t outputVersion = 4;
constexpr std::uint32_t outputManagerVersion = 3;
constexpr std::uint32_t leastOutputVersion = WL_OUTPUT_DONE_SINCE_VERSION;

std::string describeDisplay(const std::string& name) {
  if (!name.empty()) return name;
  const char* fromEnvironment = std::getenv("WAYLAND_DISPLAY");
  return fromEnvironment != nullptr && *fromEnvironment != '\0' ? fromEnvironment : "(WAYLAND_DISPLAY is not set)";
}

// The library's own words are for developers.
[[gnu::format(printf, 1, 0)]] void logForDevelopers(const char* format, va_list arguments) {
  if (!NimbraLog::enabled()) return;
  std::array<char, 512> text{};
  std::vsnprintf(text.data(), text.size(), format, arguments);
  NimbraLog::debug(text.data());
}

template <typename T>
WaylandPtr<T> bind(wl_registry* registry, std::uint32_t number, const wl_interface& interface, std::uint32_t version) {
  return WaylandPtr<T>(static_cast<T*>(wl_registry_bind(registry, number, &interface, version)));
}

std::string breakReason(wl_display* display) {
  const int error = wl_display_get_error(display);
  if (error != EPROTO) return std::strerror(error);
  const wl_interface* interface = nullptr;
  const std::uint32_t code = wl_display_get_protocol_error(display, &interface, nullptr);
  return std::string("the compositor found fault with ") + (interface != nullptr ? interface->name : "a request") +
         " (error " + std::to_string(code) + ")";
}

}  // namespace

const wl_registry_listener WaylandConnection::registryListener = {
    .global =
        [](void* data, wl_registry*, std::uint32_t number, const char* interface, std::uint32_t version) {
          static_cast<WaylandConnection*>(data)->globalAppeared(number, interface, version);
        },
    .global_remove = [](void* data, wl_registry*,
                        std::uint32_t number) { static_cast<WaylandConnection*>(data)->globalGone(number); },
};

WaylandConnection::WaylandConnection(const std::string& displayName, const DescriptorWatcher& watch,
                                     TimerFactory& timers, double patience)
    : display_(wl_display_connect(displayName.empty() ? nullptr : displayName.c_str())), timers_(timers) {
  const std::string prefix = "The Wayland display " + describeDisplay(displayName);
  if (!display_) throw std::runtime_error(prefix + " can't be opened: " + std::strerror(errno) + ".");
  wl_log_set_handler_client(logForDevelopers);
  registry_.reset(wl_display_get_registry(raw()));
  wl_registry_add_listener(registry_.get(), &registryListener, this);
  // The second one is for what the outputs say, which are bound in the first.
  if (!roundTrip(patience) || !roundTrip(patience)) {
    throw std::runtime_error(prefix + (isBroken() ? " went away at once." : " does not answer."));
  }
  if (!compositor_) throw std::runtime_error(prefix + " has no compositor.");
  watch_ = watch(wl_display_get_fd(raw()), [this] { readable(); });
}

WaylandConnection::~WaylandConnection() = default;

void WaylandConnection::globalAppeared(std::uint32_t number, std::string_view interface, std::uint32_t version) {
  if (interface == wl_compositor_interface.name) {
    compositor_ =
        bind<wl_compositor>(registry_.get(), number, wl_compositor_interface, std::min(version, compositorVersion));
  } else if (interface == wl_shm_interface.name) {
    shm_ = bind<wl_shm>(registry_.get(), number, wl_shm_interface, 1);
  } else if (interface == zwlr_layer_shell_v1_interface.name) {
    layerShell_ = bind<zwlr_layer_shell_v1>(registry_.get(), number, zwlr_layer_shell_v1_interface,
                                            std::min(version, layerShellVersion));
  } else if (interface == wp_viewporter_interface.name) {
    viewporter_ = bind<wp_viewporter>(registry_.get(), number, wp_viewporter_interface, 1);
  } else if (interface == zxdg_output_manager_v1_interface.name) {
    outputManager_ = bind<zxdg_output_manager_v1>(registry_.get(), number, zxdg_output_manager_v1_interface,
                                                  std::min(version, outputManagerVersion));
    for (const auto& output : outputs_) output->askForLogicalPlace(outputManager_.get());
  } else if (interface == wl_output_interface.name && version >= leastOutputVersion) {
    addOutput(number, std::min(version, outputVersion));
  }
}

void WaylandConnection::addOutput(std::uint32_t number, std::uint32_t version) {
  auto raw = bind<wl_output>(registry_.get(), number, wl_output_interface, version);
  outputs_.push_back(std::make_shared<WaylandOutput>(std::move(raw), number, [this] { outputsChanged(); }));
  outputs_.back()->askForLogicalPlace(outputManager_.get());
}

void WaylandConnection::globalGone(std::uint32_t number) {
  if (std::erase_if(outputs_, [&](const auto& output) { return output->global() == number; }) > 0) outputsChanged();
}

WaylandConnection::Subscription WaylandConnection::onOutputsChange(std::function<void()> handler) {
  auto subscriber = std::make_shared<std::function<void()>>(std::move(handler));
  std::erase_if(subscribers_, [](const auto& entry) { return entry.expired(); });
  subscribers_.push_back(subscriber);
  return subscriber;
}

void WaylandConnection::outputsChanged() {
  const auto current = subscribers_;
  for (const auto& entry : current) {
    if (const auto subscriber = entry.lock()) (*subscriber)();
  }
}

bool WaylandConnection::roundTrip(double seconds) {
  static constexpr wl_callback_listener listener = {
      .done = [](void* data, wl_callback*, std::uint32_t) { *static_cast<bool*>(data) = true; }};
  const double end = mediaTime() + seconds;
  bool done = false;
  const WaylandPtr<wl_callback> callback(wl_display_sync(raw()));
  wl_callback_add_listener(callback.get(), &listener, &done);
  while (!done) {
    if (mediaTime() > end || !readOnce(end - mediaTime())) return false;
  }
  return true;
}

// Waits for events and handles them; false when the connection is broken. Handles what is there already first.
bool WaylandConnection::readOnce(double seconds) {
  if (wl_display_prepare_read(raw()) != 0) return wl_display_dispatch_pending(raw()) >= 0;
  flush();
  pollfd waiting{wl_display_get_fd(raw()), POLLIN, 0};
  if (::poll(&waiting, 1, static_cast<int>(seconds * 1000) + 1) <= 0) {
    wl_display_cancel_read(raw());
    return !isBroken();
  }
  return wl_display_read_events(raw()) >= 0 && wl_display_dispatch_pending(raw()) >= 0;
}

void WaylandConnection::readable() {
  while (wl_display_prepare_read(raw()) != 0) {
    if (wl_display_dispatch_pending(raw()) < 0) return reportBreak();
  }
  wl_display_read_events(raw());  // its failure stays in the display
  dispatchQueued();
}

void WaylandConnection::dispatchQueued() {
  if (dispatching_) return;
  dispatching_ = true;
  wl_display_dispatch_pending(raw());
  dispatching_ = false;
  flush();
  if (isBroken()) reportBreak();
}

// A compositor that reads nothing must not stop us, and there is no telling when it reads again.
void WaylandConnection::flush() {
  const bool full = wl_display_flush(raw()) < 0 && errno == EAGAIN;
  if (!full) {
    flushLater_.reset();
  } else if (!flushLater_) {
    flushLater_ = timers_.repeating(flushPause, 0, [this] { flush(); });
  }
}

void WaylandConnection::reportBreak() {
  if (breakReported_) return;
  breakReported_ = true;
  watch_.reset();
  flushLater_.reset();
  if (broken_) broken_("The connection to the Wayland compositor was lost: " + breakReason(raw()) + ".");
}

}  // namespace veloria
