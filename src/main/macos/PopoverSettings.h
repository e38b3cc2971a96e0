#pragma once

#include "main/SettingsHost.h"
#include "platform/macos/shell/SettingsPopover.h"

namespace veloria {

/// The settings window as the content of the Mac's popover. Main thread.
class PopoverSettings final : public SettingsContent {
 public:
  /// `host` must outlive this.
  explicit PopoverSettings(SettingsHost& host) : host_(host) {}

  void* view() override;
  void appeared() override;
  void disappeared() override;

 private:
  SettingsHost& host_;
};

}  // namespace veloria
