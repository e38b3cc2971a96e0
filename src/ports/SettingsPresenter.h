#pragma once

#include <optional>

#include "base/Geometry.h"

namespace veloria {

/// Port: the settings window. Main thread.
class SettingsPresenter {
 public:
  virtual ~SettingsPresenter() = default;
  /// Shows it, or brings it to the front, with the keyboard focus. `place` is what the user clicked (see
  /// StatusItem::place()); nothing: the default place.
  virtual void show(const std::optional<Rect>& place) = 0;
  virtual void close() = 0;
  virtual bool isShown() const = 0;
};

}  // namespace veloria
