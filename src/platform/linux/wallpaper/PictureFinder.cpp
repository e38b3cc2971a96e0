#include "platform/linux/wallpaper/PictureFinder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <vector>

#include "base/Files.h"
#include "platform/linux/wallpaper/FehScript.h"
#include "platform/linux/wallpaper/GsettingsListing.h"
#include "platform/linux/wallpaper/HyprpaperSettings.h"
#include "platform/linux/wallpaper/NitrogenSettings.h"
#include "platform/linux/wallpaper/PictureAddress.h"
#include "platform/linux/wallpaper/PicturePackage.h"
#include "platform/linux/wallpaper/PlasmaSettings.h"
#include "platform/linux/wallpaper/Slideshow.h"
#include "platform/linux/wallpaper/SwaybgArguments.h"
#include "platform/linux/wallpaper/SwwwQuery.h"
#include "platform/linux/wallpaper/XfceSettings.h"
#include "platform/posix/process/CommandOutput.h"
#include "ports/DesktopPicture.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostSettingsBytes = std::size_t{1} << 20;
constexpr std::size_t mostArgumentBytes = std::size_t{1} << 16;
constexpr std::size_t mostPackageFiles = 1000;
constexpr double commandSeconds = 2;

std::string ask(const std::vector<std::string>& argv) {
  return commandOutput(argv, commandSeconds, mostSettingsBytes).value_or("");
}

/// Empty when it can't be read.
std::string textOf(const fs::path& file, std::size_t cap = mostSettingsBytes) {
  auto text = readFileBounded(file, cap);
  return text ? *std::move(text) : std::string();
}

/// `folder` is empty when nobody knows it.
std::string settingsOf(const fs::path& folder, const char* file) {
  return folder.empty() ? std::string() : textOf(folder / file);
}

std::string backgroundSettings(const char* schema) {
  return ask({"gsettings", "list-recursively", schema});
}

std::optional<std::string> gnomePicture() {
  const std::string settings = backgroundSettings("org.gnome.desktop.background");
  if (settings.empty()) return std::nullopt;
  const std::string style = ask({"gsettings", "get", "org.gnome.desktop.interface", "color-scheme"});
  return gsettingsPictureFromText(settings, gsettingsPrefersDark(style));
}

bool isOwnProcess(const fs::path& folder) {
  struct stat status {};
  const std::string name = folder.filename().string();
  const bool number = !name.empty() && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
  return number && ::stat(folder.c_str(), &status) == 0 && status.st_uid == ::geteuid();
}

bool runsSwaybg(std::string_view arguments) {
  const std::string_view program = arguments.substr(0, arguments.find('\0'));
  return program.substr(program.rfind('/') + 1) == "swaybg";
}

/// The command lines of this user's swaybg processes, in the form that swaybgPictureFromText() reads.
std::string swaybgArguments(const fs::path& processes) {
  std::string all;
  std::error_code error;
  for (fs::directory_iterator entry(processes, error), end; !error && entry != end; entry.increment(error)) {
    if (!isOwnProcess(entry->path())) continue;
    const std::string arguments = textOf(entry->path() / "cmdline", mostArgumentBytes);
    if (runsSwaybg(arguments)) all += arguments + '\0';
  }
  return all;
}

std::optional<std::string> pictureAddress(PictureSource source, const DesktopSurroundings& surroundings,
                                          std::string_view screen) {
  switch (source) {
    case PictureSource::gnome:
      return gnomePicture();
    case PictureSource::cinnamon:
      return gsettingsPictureFromText(backgroundSettings("org.cinnamon.desktop.background"), false);
    case PictureSource::mate:
      return gsettingsPictureFromText(backgroundSettings("org.mate.background"), false);
    case PictureSource::plasma:
      return plasmaPictureFromText(settingsOf(surroundings.config, "plasma-org.kde.plasma.desktop-appletsrc"));
    case PictureSource::xfce:
      return xfcePictureFromText(settingsOf(surroundings.config, "xfce4/xfconf/xfce-perchannel-xml/xfce4-desktop.xml"),
                                 screen);
    case PictureSource::swaybg:
      return swaybgPictureFromText(swaybgArguments(surroundings.processes), screen);
    case PictureSource::swww:
      return swwwPictureFromText(ask({"swww", "query"}), screen);
    case PictureSource::hyprpaper:
      return hyprpaperPictureFromText(settingsOf(surroundings.config, "hypr/hyprpaper.conf"), screen);
    case PictureSource::feh:
      return fehPictureFromText(settingsOf(surroundings.home, ".fehbg"));
    case PictureSource::nitrogen:
      return nitrogenPictureFromText(settingsOf(surroundings.config, "nitrogen/bg-saved.cfg"));
    case PictureSource::rootPixmap:
      break;
  }
  return std::nullopt;
}

std::optional<fs::path> pictureInPackage(const fs::path& package) {
  const fs::path folder = package / "contents/images";
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (names.size() == mostPackageFiles) break;
    names.push_back(entry->path().filename().string());
  }
  const auto name = packagePicture(names, DesktopPicture::side);
  if (!name) return std::nullopt;
  return folder / *name;
}

std::optional<fs::path> pictureInSlideshow(const fs::path& file, const fs::path& home) {
  const auto address = slideshowPictureFromText(textOf(file));
  return address ? localPath(*address, home) : std::nullopt;
}

}  // namespace

std::optional<fs::path> findPicture(PictureSource source, const DesktopSurroundings& surroundings,
                                    std::string_view screen) {
  const auto address = pictureAddress(source, surroundings, screen);
  auto path = address ? localPath(*address, surroundings.home) : std::nullopt;
  if (!path) return std::nullopt;
  std::error_code error;
  if (fs::is_directory(*path, error)) return pictureInPackage(*path);
  if (path->extension() == ".xml") return pictureInSlideshow(*path, surroundings.home);
  return path;
}

}  // namespace veloria
