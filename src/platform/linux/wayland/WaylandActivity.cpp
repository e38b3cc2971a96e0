#include "platform/linux/wayland/WaylandActivity.h"

#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <string_view>
#include <utility>

namespace veloria {

FullScreenInquiry::FullScreenInquiry(Question question)
    : question_(std::move(question)), thread_([this](const std::stop_token& stop) { work(stop); }) {}

void FullScreenInquiry::ask() {
  const std::lock_guard guard(mutex_);
  wanted_ = true;
  asked_.notify_one();
}

std::optional<CoveredOutputs> FullScreenInquiry::answer() const {
  const std::lock_guard guard(mutex_);
  return answer_;
}

void FullScreenInquiry::work(const std::stop_token& stop) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);  // the main thread handles signals
  std::unique_lock lock(mutex_);
  while (asked_.wait(lock, stop, [this] { return wanted_; })) {
    wanted_ = false;
    lock.unlock();
    auto answer = question_();
    lock.lock();
    answer_ = std::move(answer);
  }
}

namespace {

constexpr std::uint32_t managerVersion = 3;
/// More are ignored.
constexpr std::size_t mostWindows = 4096;

}  // namespace

struct WaylandFullScreen::Window {
  WaylandFullScreen* owner = nullptr;
  WaylandPtr<zwlr_foreign_toplevel_handle_v1> handle;
  std::set<wl_output*> outputs;
  bool fullScreen = false;  ///< and not minimised
  bool focused = false;
  bool hidden = false;  ///< another window on its output got the focus after it
  bool changed = false;

  void enter(wl_output* output) {
    if (output != nullptr) changed = outputs.insert(output).second || changed;  // null: it has just gone
  }
  void leave(wl_output* output) { changed = outputs.erase(output) > 0 || changed; }
  bool sharesAnOutputWith(const Window& other) const {
    return std::any_of(outputs.begin(), outputs.end(), [&](auto* each) { return other.outputs.contains(each); });
  }
};

const zwlr_foreign_toplevel_handle_v1_listener WaylandFullScreen::windowListener = {
    .title = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .app_id = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .output_enter = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { static_cast<Window*>(data)->enter(output); },
    .output_leave = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { static_cast<Window*>(data)->leave(output); },
    .state =
        [](void* data, zwlr_foreign_toplevel_handle_v1*, wl_array* states) {
          const auto* first = static_cast<const std::uint32_t*>(states->data);
          const auto* end = first + states->size / sizeof(std::uint32_t);
          const auto has = [&](std::uint32_t state) { return std::find(first, end, state) != end; };
          auto& window = *static_cast<Window*>(data);
          const bool minimised = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
          window.fullScreen = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_FULLSCREEN) && !minimised;
          window.focused = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) && !minimised;
          window.changed = true;
        },
    // A new title, which may have a clock in it, is not a change.
    .done =
        [](void* data, zwlr_foreign_toplevel_handle_v1*) {
          auto& window = *static_cast<Window*>(data);
          if (std::exchange(window.changed, false)) window.owner->windowsChanged();
        },
    .closed =
        [](void* data, zwlr_foreign_toplevel_handle_v1*) {
          const auto* window = static_cast<Window*>(data);
          window->owner->remove(window);
        },
    .parent = [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {},
};

const zwlr_foreign_toplevel_manager_v1_listener WaylandFullScreen::managerListener = {
    .toplevel = [](void* data, zwlr_foreign_toplevel_manager_v1*,
                   zwlr_foreign_toplevel_handle_v1* handle) { static_cast<WaylandFullScreen*>(data)->add(handle); },
    .finished = [](void*, zwlr_foreign_toplevel_manager_v1*) {},
};

const wl_registry_listener WaylandFullScreen::registryListener = {
    .global =
        [](void* data, wl_registry* registry, std::uint32_t number, const char* interface, std::uint32_t version) {
          if (std::string_view(interface) != zwlr_foreign_toplevel_manager_v1_interface.name) return;
          auto* self = static_cast<WaylandFullScreen*>(data);
          self->manager_.reset(static_cast<zwlr_foreign_toplevel_manager_v1*>(wl_registry_bind(
              registry, number, &zwlr_foreign_toplevel_manager_v1_interface, std::min(version, managerVersion))));
          zwlr_foreign_toplevel_manager_v1_add_listener(self->manager_.get(), &managerListener, self);
        },
    .global_remove = [](void*, wl_registry*, std::uint32_t) {},
};

WaylandFullScreen::WaylandFullScreen(WaylandConnection& connection, FullScreenInquiry::Question question)
    : registry_(wl_display_get_registry(connection.raw())), inquiry_(std::move(question)) {
  wl_registry_add_listener(registry_.get(), &registryListener, this);
  connection.flush();
}

WaylandFullScreen::~WaylandFullScreen() = default;

bool WaylandFullScreen::isActive(const WaylandOutput& output) {
  askAtOnce_ = true;
  inquiry_.ask();  // some changes on the screen are none in the list
  if (const auto covered = inquiry_.answer()) return covered->contains(output.facts().name);
  return std::any_of(windows_.begin(), windows_.end(), [&](const auto& window) {
    return window->fullScreen && !window->hidden && window->outputs.contains(output.raw());
  });
}

void WaylandFullScreen::windowsChanged() {
  markHidden();
  if (std::exchange(askAtOnce_, false)) inquiry_.ask();
}

void WaylandFullScreen::markHidden() {
  for (const auto& front : windows_) {
    if (!front->focused) continue;
    front->hidden = false;
    for (const auto& each : windows_) {
      if (!each->focused && each->sharesAnOutputWith(*front)) each->hidden = true;
    }
  }
}

void WaylandFullScreen::add(zwlr_foreign_toplevel_handle_v1* handle) {
  auto window = std::make_unique<Window>();
  window->owner = this;
  window->handle.reset(handle);
  if (windows_.size() >= mostWindows) return;
  zwlr_foreign_toplevel_handle_v1_add_listener(handle, &windowListener, window.get());
  windows_.push_back(std::move(window));
}

void WaylandFullScreen::remove(const Window* window) {
  std::erase_if(windows_, [&](const auto& each) { return each.get() == window; });
  windowsChanged();
}

struct WaylandOutputPower::Power {
  WaylandPtr<zwlr_output_power_v1> control;
  bool off = false;
};

const zwlr_output_power_v1_listener WaylandOutputPower::powerListener = {
    .mode = [](void* data, zwlr_output_power_v1*,
               std::uint32_t mode) { static_cast<Power*>(data)->off = mode == ZWLR_OUTPUT_POWER_V1_MODE_OFF; },
    .failed = [](void* data, zwlr_output_power_v1*) { static_cast<Power*>(data)->off = false; },
};

const wl_registry_listener WaylandOutputPower::registryListener = {
    .global =
        [](void* data, wl_registry* registry, std::uint32_t number, const char* interface, std::uint32_t) {
          if (std::string_view(interface) != zwlr_output_power_manager_v1_interface.name) return;
          auto* self = static_cast<WaylandOutputPower*>(data);
          self->manager_.reset(static_cast<zwlr_output_power_manager_v1*>(
              wl_registry_bind(registry, number, &zwlr_output_power_manager_v1_interface, 1)));
          self->watchOutputs();
        },
    .global_remove = [](void*, wl_registry*, std::uint32_t) {},
};

WaylandOutputPower::WaylandOutputPower(WaylandConnection& connection)
    : connection_(connection),
      registry_(wl_display_get_registry(connection.raw())),
      changes_(connection.onOutputsChange([this] { watchOutputs(); })) {
  wl_registry_add_listener(registry_.get(), &registryListener, this);
  connection.flush();
}

WaylandOutputPower::~WaylandOutputPower() = default;

void WaylandOutputPower::watchOutputs() {
  const auto& outputs = connection_.outputs();
  std::erase_if(powers_, [&](const auto& entry) {
    return std::none_of(outputs.begin(), outputs.end(),
                        [&](const auto& output) { return output->global() == entry.first; });
  });
  if (manager_ == nullptr) return;
  for (const auto& output : outputs) {
    auto& power = powers_[output->global()];
    if (power != nullptr) continue;
    power = std::make_unique<Power>();
    power->control.reset(zwlr_output_power_manager_v1_get_output_power(manager_.get(), output->raw()));
    zwlr_output_power_v1_add_listener(power->control.get(), &powerListener, power.get());
  }
  connection_.flush();
}

bool WaylandOutputPower::allOff() const {
  return !powers_.empty() &&
         std::all_of(powers_.begin(), powers_.end(), [](const auto& entry) { return entry.second->off; });
}

}  // namespace veloria
