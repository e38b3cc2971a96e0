#pragma once

#include <memory>
#include <optional>

#include "ports/PointerSource.h"
#include "ports/ScreenProvider.h"

namespace veloria {

/// The screens of this Mac, the one with the menu bar first. Main thread, after the application object is made.
class MacScreenProvider final : public ScreenProvider {
 public:
  MacScreenProvider();
  ~MacScreenProvider() override;

  std::vector<Screen> screens() override;
  /// The screen of the window that has the keyboard, if any.
  std::optional<Screen> mainScreen();
  /// Changes that come together are reported once, later on the main thread.
  void setChangeHandler(std::function<void()> handler) override;

 private:
  struct Watch;
  std::unique_ptr<Watch> watch_;
};

/// The pointer. Needs no permission. Main thread.
PointerSource macPointerSource();

}  // namespace veloria
