#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/Environment.h"
#include "base/Result.h"

namespace veloria {

/// A setting of the desktop that makes its panel clear. Values are JSON; null is a setting that was never set.
struct PanelSetting {
  std::string key;       ///< names it among those of its desktop; the same in every run
  nlohmann::json now;    ///< its value
  nlohmann::json clear;  ///< its value for a clear panel; never null
};

/// One desktop's settings for its panels. They may be changed by others at any time, and may not answer. Errors are
/// sentences for the user. Calls block, for some seconds if the desktop does not answer. One thread at a time.
class PanelSettings {
 public:
  virtual ~PanelSettings() = default;
  PanelSettings(const PanelSettings&) = delete;
  PanelSettings& operator=(const PanelSettings&) = delete;

  /// What the desktop has now, in the order in which it is to be written. An error if there is no panel.
  virtual Result<std::vector<PanelSetting>> look() = 0;
  /// `key`: one that look() gives. `value`: any JSON value; one that the setting can't have is an error. Success does
  /// not mean that the desktop keeps it: look() tells.
  virtual Result<Done> write(const std::string& key, const nlohmann::json& value) = 0;

 protected:
  PanelSettings() = default;
};

/// Of the panels at the top edge, or of those at the bottom edge if there are none: the band is at one of them. A
/// change of the text restarts them.
std::unique_ptr<PanelSettings> matePanel(const Environment& environment);
/// All panels, as their text can't be told apart. A change of the text restarts them.
std::unique_ptr<PanelSettings> xfcePanel(const Environment& environment);
/// All panels. The desktop can't do it by itself, so these install something small in the user's data folder and
/// switch it on: a Plasma style that takes everything but the panel's background from the present one, and a Cinnamon
/// extension.
std::unique_ptr<PanelSettings> plasmaPanel(const Environment& environment);
std::unique_ptr<PanelSettings> cinnamonPanel(const Environment& environment);

// For those that use the program `gsettings`. Values are in its own text form.

Result<std::string> readGsetting(const std::string& schema, const std::string& key);
Result<Done> writeGsetting(const std::string& schema, const std::string& key, const std::string& value);
/// The strings in a list such as "['top', 'bottom']", without those that hold anything but letters of ASCII, digits,
/// '-' and '_'.
std::vector<std::string> plainWordsInList(std::string_view list);

/// Writes the files, as paths below `folder` and their contents, and makes their folders.
Result<Done> installFiles(const std::string& folder, const std::vector<std::pair<std::string, std::string>>& files);

}  // namespace veloria
