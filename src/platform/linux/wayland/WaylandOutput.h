#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/wayland/OutputFacts.h"
#include "platform/linux/wayland/WaylandPtr.h"

namespace veloria {

/// One output of the compositor and what it says about it. Main thread.
class WaylandOutput {
 public:
  /// `global` is the output's number in the registry. `changed` is called after each complete description.
  WaylandOutput(WaylandPtr<wl_output> output, std::uint32_t global, std::function<void()> changed);
  WaylandOutput(const WaylandOutput&) = delete;
  WaylandOutput& operator=(const WaylandOutput&) = delete;

  /// Asks for the output's logical place too; the manager must be there as long as this. At most once.
  void askForLogicalPlace(zxdg_output_manager_v1* manager);

  wl_output* raw() const { return output_.get(); }
  std::uint32_t global() const { return global_; }
  /// The last complete description; an empty size before the first one.
  const OutputFacts& facts() const { return facts_; }

 private:
  static const wl_output_listener listener;
  static const zxdg_output_v1_listener logicalListener;
  void complete();

  WaylandPtr<wl_output> output_;
  WaylandPtr<zxdg_output_v1> logical_;
  std::uint32_t global_;
  std::function<void()> changed_;
  OutputFacts pending_;
  OutputFacts facts_;
};

}  // namespace veloria
