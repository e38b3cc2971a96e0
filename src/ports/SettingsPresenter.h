#pragma once

#include <optional>

#include "base/Geometry.h"

namespace veloria {

/// Port: the settings, where a person can see and change them. Main thread.
class SettingsPresenter {
 public:
  virtual ~SettingsPresenter() = default;
  /// Shows them, or brings them to the front, ready for the keyboard. `place` is what the person clicked, as
  /// StatusItem::place() gives it; nothing: wherever windows appear.
  virtual void show(const std::optional<Rect>& place) = 0;
  virtual void close() = 0;
  virtual bool isShown() const = 0;
};

}  // namespace veloria
