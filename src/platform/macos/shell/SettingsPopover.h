#pragma once

#include <functional>
#include <memory>

#include "ports/SettingsPresenter.h"

namespace veloria {

/// Port: the content of the settings window, from any toolkit. Main thread.
class SettingsContent {
 public:
  virtual ~SettingsContent() = default;
  /// Its view (NSView), in no window. Called before each showing; the content keeps the ownership.
  virtual void* view() = 0;
  /// The view is on the screen now, in a window that has the keyboard.
  virtual void appeared() = 0;
  /// The view is no longer on the screen.
  virtual void disappeared() = 0;
};

/// The settings in a popover below the status item, which closes at a click elsewhere. Main thread.
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
