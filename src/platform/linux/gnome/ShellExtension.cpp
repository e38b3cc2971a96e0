#include "ShellExtension.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/Text.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace {

constexpr int oldest = 42;
constexpr int firstWithModules = 45;
constexpr qsizetype longestError = 200;

bool holdsExtension(const std::filesystem::path& data, const std::string& uuid) {
  std::error_code unknown;
  return data.is_absolute() &&
         std::filesystem::is_regular_file(data / "gnome-shell" / "extensions" / uuid / "metadata.json", unknown);
}

}  // namespace

std::optional<QString> shellExtensionFor(const QString& version) {
  bool isNumber = false;
  const int major = version.section(QLatin1Char('.'), 0, 0).toInt(&isNumber);
  if (!isNumber || major < oldest) return std::nullopt;
  return major < firstWithModules ? QStringLiteral("panel-42@veloria.tollmere.com")
                                  : QStringLiteral("panel@veloria.tollmere.com");
}

ShellExtension shellExtensionIn(const QVariantMap& info) {
  using State = ShellExtension::State;
  const QVariant state = info.value(QStringLiteral("state"));
  if (state.typeId() != QMetaType::Double) return {};
  const double number = state.toDouble();
  if (number == 1) return {State::enabled, {}};
  if (number == 3) {
    return {State::failed, info.value(QStringLiteral("error")).toString().left(longestError).toStdString()};
  }
  if (number == 4) return {State::outOfDate, {}};
  constexpr double others[] = {2, 6, 7, 8};  // disabled, initialised, on the way to one or the other
  return {std::count(std::begin(others), std::end(others), number) > 0 ? State::disabled : State::unknown, {}};
}

bool isShellExtensionInstalled(const QString& uuid, const Environment& environment) {
  const std::string name = uuid.toStdString();
  const auto own = dataFolder(environment);
  if (own && holdsExtension(own->parent_path(), name)) return true;
  std::string folders = environment("XDG_DATA_DIRS").value_or("");
  if (folders.empty()) folders = "/usr/local/share:/usr/share";
  const auto parts = splitText(folders, ':');
  return std::any_of(parts.begin(), parts.end(),
                     [&](std::string_view folder) { return holdsExtension(std::filesystem::path(folder), name); });
}

}  // namespace veloria
