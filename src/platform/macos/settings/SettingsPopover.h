#pragma once

#include <functional>
#include <memory>

#include "ports/SettingsPresenter.h"

namespace veloria {

/// Port: the settings window's content, whichever toolkit made it. Main thread.
class SettingsContent {
 public:
  virtual ~SettingsContent() = default;
  /// Its view (NSView), without a window around it. Asked for each time before it is shown; stays the content's.
  virtual void* view() = 0;
  /// The view is on the screen now, in a window that has the keyboard.
  virtual void appeared() = 0;
  /// It is on no screen any more.
  virtual void disappeared() = 0;
};

/// The settings in a popover below the status item, which goes away when something else is clicked. Main thread.
class SettingsPopover final : public SettingsPresenter {
 public:
  /// `anchor` gives the view (NSView) that the popover hangs from. Both must outlive this.
  SettingsPopover(SettingsContent& content, std::function<void*()> anchor);
  ~SettingsPopover() override;

  /// Always below the anchor.
  void show(const std::optional<Rect>& place) override;
  void close() override;
  bool isShown() const override;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace veloria
