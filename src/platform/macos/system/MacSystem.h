#pragma once

#include <functional>
#include <memory>

#include "ports/SystemPort.h"

namespace veloria {

/// The Mac's display settings: Reduce Transparency and Increase Contrast, whose changes the workspace tells of, and the
/// tint of glass, whose changes nobody tells of. Panes are those of System Settings. Main thread.
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

}  // namespace veloria
