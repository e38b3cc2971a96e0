#include "platform/linux/wallpaper/FehScript.h"

#include <vector>

#include "base/TextLines.h"

namespace veloria {

namespace {

/// The words of one line, with the shell's quotes and backslashes resolved; at least one, which
/// may be empty. A quote that is not closed ends with the line.
std::vector<std::string> shellWords(std::string_view line) {
  std::vector<std::string> words(1);
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
      words.back() += line[++i];
    } else if (quote != 0 ? c == quote : c == '\'' || c == '"') {
      quote = quote != 0 ? '\0' : c;
    } else if (quote == 0 && (c == ' ' || c == '\t')) {
      if (!words.back().empty()) words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  return words;
}

bool isFeh(std::string_view command) {
  return command.substr(command.rfind('/') + 1) == "feh";
}

}  // namespace

std::optional<std::string> fehPictureFromText(std::string_view script) {
  for (const std::string_view line : splitText(script, '\n')) {
    const std::vector<std::string> words = shellWords(trimmed(line));
    if (!isFeh(words.front())) continue;
    for (std::size_t i = 1; i < words.size(); ++i) {
      if (words[i].starts_with('/') || words[i].starts_with("~/")) return words[i];
    }
  }
  return std::nullopt;
}

}  // namespace veloria
