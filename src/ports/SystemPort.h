#pragma once

#include <functional>

#include "base/Result.h"

namespace veloria {

/// The display settings of the whole desktop that decide how much of the band can be seen.
struct SystemFacts {
  bool reduceTransparency = false;  ///< nothing is drawn translucent
  bool increaseContrast = false;    ///< the user asks for more contrast
  double glassTint = 0;             ///< how far glass is tinted; 0 where there is no such setting, never not a number

  bool operator==(const SystemFacts&) const = default;
};

/// A part of the desktop's own settings that can be opened.
enum class SystemPane { menuBar, appearance, accessibilityDisplay, wallpaper };

/// The desktop's own settings. Main thread.
class SystemPort {
 public:
  virtual ~SystemPort() = default;
  SystemPort(const SystemPort&) = delete;
  SystemPort& operator=(const SystemPort&) = delete;

  /// What is known now. Doesn't wait: what takes time is looked up because of this call and told by the handler.
  virtual SystemFacts facts() = 0;
  /// Called after the facts may have changed. An empty handler ends that.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
  /// Shows a pane to the user. The error is a sentence for them.
  virtual Result<Done> open(SystemPane pane) = 0;

 protected:
  SystemPort() = default;
};

}  // namespace veloria
