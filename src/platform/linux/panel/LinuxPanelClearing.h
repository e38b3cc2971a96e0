#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "base/Environment.h"
#include "ports/PanelClearing.h"

namespace veloria {

/// Clears the panels of Xfce, MATE, Plasma and Cinnamon by their settings, and tells what to write into the files of
/// panels that have none. Panels come and go, and others change them: offer() looks for the panel again after some
/// seconds and asks its desktop after half a minute. The former values are in the file panel.json of the state folder.
///
/// Main thread, with a QCoreApplication that outlives it. Desktops are asked on a thread of its own. Only the
/// destructor can wait, for as long as a desktop does not answer; half a minute at most.
class LinuxPanelClearing final : public PanelClearing {
 public:
  /// `processes`: a folder as /proc.
  explicit LinuxPanelClearing(const Environment& environment, const std::filesystem::path& processes = "/proc");
  ~LinuxPanelClearing() override;

  Offer offer() const override;
  bool letsLightThrough() const override;
  bool canRestore() const override;
  void clear(Answer answer) override;
  void restore(Answer answer) override;
  void setChangeHandler(std::function<void()> handler) override;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

/// The clearing for this session. `makeForGnome`: used if the panel is GNOME Shell's; may be empty.
std::unique_ptr<PanelClearing> makePanelClearing(
    const Environment& environment, const std::function<std::unique_ptr<PanelClearing>()>& makeForGnome = {});

}  // namespace veloria
