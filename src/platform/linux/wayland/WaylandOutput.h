#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/linux/screens/ScreenDescription.h"
#include "platform/linux/wayland/WaylandPtr.h"

namespace veloria {

/// A compositor's description of one output, unchecked.
struct OutputFacts {
  std::string name;
  int modeWidth = 0;  ///< pixels, before the output is turned; 0 if unknown
  int modeHeight = 0;
  bool turned = false;  ///< by a quarter, so that width and height change places
  int scale = 1;        ///< wl_output's: a whole number, the next above a fractional scale
  int x = 0;            ///< compositor's coordinates, y downwards
  int y = 0;
  std::optional<Extent> logicalSize;  ///< points; from xdg-output only
  bool operator==(const OutputFacts&) const = default;
};

/// The output in points, y downwards; nothing for one that can't be a screen (no size, beyond 65535 points or the
/// coordinate range).
std::optional<MonitorDescription> monitorOf(const OutputFacts& facts);

/// Pixels per point, 0.5 to 8. With `fractional` the ratio of the mode's size to the logical size, in the 120ths that
/// compositors count in; otherwise, and if a size is missing, the whole number of wl_output.
double pixelsPerPoint(const OutputFacts& facts, bool fractional);

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
