#include "platform/linux/panel/PanelSettings.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <utility>

#include "base/Files.h"
#include "base/Text.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/Programs.h"

namespace veloria {

namespace {

constexpr double patienceSeconds = 5;
constexpr std::size_t mostOutputBytes = std::size_t{1} << 16;

bool isPlainWord(std::string_view word) {
  return !word.empty() && std::ranges::all_of(word, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  });
}

}  // namespace

Result<std::string> readGsetting(const std::string& schema, const std::string& key) {
  auto output = commandOutput({"gsettings", "get", schema, key}, patienceSeconds, mostOutputBytes);
  if (!output) return Failure{"The program gsettings could not read the desktop's setting '" + key + "'."};
  return std::string(trimmed(std::string_view(*output).substr(0, output->find('\n'))));
}

Result<Done> writeGsetting(const std::string& schema, const std::string& key, const std::string& value) {
  if (commandOutput({"gsettings", "set", schema, key, value}, patienceSeconds, mostOutputBytes)) return Done{};
  return Failure{"The desktop did not accept the change of its setting '" + key + "'."};
}

std::vector<std::string> plainWordsInList(std::string_view list) {
  std::vector<std::string> words;
  const auto parts = splitText(list, '\'');
  for (std::size_t i = 1; i + 1 < parts.size(); i += 2) {
    if (isPlainWord(parts[i])) words.emplace_back(parts[i]);
  }
  return words;
}

Result<Done> installFiles(const std::string& folder, const std::vector<std::pair<std::string, std::string>>& files) {
  for (const auto& [name, content] : files) {
    const std::filesystem::path file = std::filesystem::path(folder) / name;
    if (!makeUserFolder(file.parent_path()))
      return Failure{"The folder " + file.parent_path().string() + " can't be made."};
    if (auto written = writeFileAtomically(file, content); !written) return written;
  }
  return Done{};
}

}  // namespace veloria
