// Any bytes as the file that remembers panels' settings: a reason, or memories that are written and read back alike.

#include "FuzzTarget.h"
#include "platform/linux/panel/PanelJournal.h"

void veloria::fuzz(std::string_view bytes) {
  const auto content = readPanelJournal(bytes);
  if (!content) return require(!content.error().empty() && content.error().size() < 300);
  const auto again = readPanelJournal(panelJournalText(*content));
  require(static_cast<bool>(again));
  for (const auto& [desktop, memories] : *content) {
    require(memories.empty() || again->at(desktop) == memories);
  }
}
