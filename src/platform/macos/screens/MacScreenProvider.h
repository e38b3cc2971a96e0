#pragma once

#include <memory>
#include <optional>

#include "ports/ScreenProvider.h"

namespace veloria {

/// The screens of this Mac, the one with the menu bar first. Main thread, once there is an application object.
class MacScreenProvider final : public ScreenProvider {
 public:
  MacScreenProvider();
  ~MacScreenProvider() override;

  std::vector<Screen> screens() override;
  /// The one with the window that has the keyboard; absent while there is none.
  std::optional<Screen> mainScreen();
  /// Changes that come together are told once, when the main thread is idle again.
  void setChangeHandler(std::function<void()> handler) override;

 private:
  struct Watch;
  std::unique_ptr<Watch> watch_;
};

}  // namespace veloria
