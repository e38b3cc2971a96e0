#pragma once

#include <functional>

#include "base/Result.h"

namespace veloria {

/// The display settings of the desktop that affect how visible the band is.
struct SystemFacts {
  bool reduceTransparency = false;  ///< nothing is drawn translucent
  bool increaseContrast = false;    ///< the user asks for more contrast
  double glassTint = 0;             ///< how far glass is tinted; 0 without such a setting

  bool operator==(const SystemFacts&) const = default;
};

/// A part of the desktop's own settings that can be opened.
enum class SystemPane { menuBar, appearance, accessibilityDisplay, wallpaper };

/// Port: the desktop's own settings. Main thread.
class SystemPort {
 public:
  virtual ~SystemPort() = default;
  SystemPort(const SystemPort&) = delete;
  SystemPort& operator=(const SystemPort&) = delete;

  /// What is known now. Doesn't wait: slow values are looked up and reported through the handler.
  virtual SystemFacts facts() = 0;
  /// Called when the facts may have changed. An empty handler ends the calls.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
  /// Shows a pane to the user. The error is a sentence for them.
  virtual Result<Done> open(SystemPane pane) = 0;

 protected:
  SystemPort() = default;
};

}  // namespace veloria
