#pragma once

#include <functional>
#include <memory>

#include "ports/SystemPort.h"

namespace veloria {

/// The Mac's display settings: Reduce Transparency and Increase Contrast, whose changes are reported, and the tint of
/// glass, whose changes are not. Panes are those of System Settings. Main thread.
class MacSystem final : public SystemPort {
 public:
  static constexpr const char* glassTintKey = "NSGlassTintAmount";

  MacSystem();
  ~MacSystem() override;

  SystemFacts facts() override;
  void setChangeHandler(std::function<void()> handler) override;
  Result<Done> open(SystemPane pane) override;

 private:
  struct Observer;
  std::unique_ptr<Observer> observer_;
};

/// Starts this application at login; only an application bundle can be started. Main thread.
class MacLoginItem final : public LoginItemPort {
 public:
  /// False too until the user allows it in System Settings.
  bool isRegistered() override;
  Result<Done> add() override;
  Result<Done> remove() override;
};

}  // namespace veloria
