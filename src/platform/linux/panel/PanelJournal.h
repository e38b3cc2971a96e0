#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "base/Environment.h"
#include "base/Result.h"

namespace veloria {

/// A setting that was changed to make a panel clear.
struct PanelMemory {
  nlohmann::json before;  ///< null: it was not set
  nlohmann::json after;
  bool operator==(const PanelMemory&) const = default;
};

/// By the setting's key.
using PanelMemories = std::map<std::string, PanelMemory>;
/// By the desktop's name.
using PanelJournalContent = std::map<std::string, PanelMemories>;

/// Reads a journal's text. Refuses anything but a journal with plain values (null, booleans, finite numbers, texts and
/// short lists of these), few and short enough for any desktop.
Result<PanelJournalContent> readPanelJournal(std::string_view text);
std::string panelJournalText(const PanelJournalContent& content);

/// Remembers in a file of the user's state folder what the panels' settings were. Whole or not at all. Any thread, one
/// at a time.
class PanelJournal {
 public:
  /// `desktop`: whose part of the file it is.
  PanelJournal(const Environment& environment, std::string desktop);

  /// None if there is no file. The error is a sentence.
  Result<PanelMemories> read() const;
  Result<Done> write(const PanelMemories& memories) const;

 private:
  Result<PanelJournalContent> readAll() const;

  std::optional<std::filesystem::path> file_;
  std::string desktop_;
};

}  // namespace veloria
