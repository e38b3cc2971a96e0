#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "platform/linux/panel/PanelSettings.h"

namespace veloria {

/// Light text on a panel that uses GTK 3, whatever the theme: rules in a file of ours, which the user's style sheet
/// takes in by a line at its beginning. Programs read them when they start. One thread at a time.
class PanelText {
 public:
  static constexpr const char* key = "text";

  /// `desktop`: names the file. `rules`: CSS that matches nothing but that desktop's panel; lives as long as this.
  PanelText(const Environment& environment, const std::string& desktop, std::string_view rules);

  PanelSetting look() const;
  /// True: takes the rules in. Anything else: takes them out again and leaves all other bytes as they are. All or
  /// nothing. The error is a sentence.
  Result<Done> write(const nlohmann::json& value) const;

 private:
  Result<Done> takeIn(const std::string& text) const;
  Result<Done> takeOut(std::string text) const;

  std::filesystem::path sheet_;  ///< the user's; empty: there is no home folder
  std::filesystem::path file_;   ///< ours, beside it
  std::string line_;
  std::string_view rules_;
};

}  // namespace veloria
