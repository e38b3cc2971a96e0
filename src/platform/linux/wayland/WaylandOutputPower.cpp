#include "platform/linux/wayland/WaylandOutputPower.h"

#include <algorithm>
#include <string_view>

namespace veloria {

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
