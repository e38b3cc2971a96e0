#pragma once

#include <memory>
#include <optional>
#include <string>

#include "settings/SettingsEditor.h"
#include "settings/SettingsStore.h"

namespace veloria {

/// Keeps nothing.
class NoStorage : public SettingsStorage {
 public:
  std::optional<std::string> read(std::string_view) override { return std::nullopt; }
  bool write(std::string_view, std::string_view) override { return true; }
};

/// A store and an editor on a clock that stands until it is moved.
struct EditedSettings {
  explicit EditedSettings(const NimbraConfig& config = {}) { store.setConfig(config); }

  double now = 100;
  SettingsStore store{std::make_unique<NoStorage>(), [](std::string_view) { return std::nullopt; }};
  SettingsEditor editor{store, [this] { return now; }};
};

}  // namespace veloria
