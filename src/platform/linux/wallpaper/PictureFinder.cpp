#include "platform/linux/wallpaper/PictureFinder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <initializer_list>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/Files.h"
#include "platform/linux/files/DesktopNames.h"
#include "platform/linux/wallpaper/PictureSettings.h"
#include "platform/posix/files/UserFolders.h"
#include "platform/posix/process/Programs.h"
#include "ports/DesktopPicture.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

using enum PictureSource;

constexpr std::size_t mostSettingsBytes = std::size_t{1} << 20;
constexpr std::size_t mostArgumentBytes = std::size_t{1} << 16;
constexpr std::size_t mostPackageFiles = 1000;
constexpr double commandSeconds = 2;

constexpr std::array<std::pair<std::string_view, PictureSource>, 19> desktopsWithSettings{{
    {"gnome", gnome},       {"gnome-classic", gnome}, {"gnome-flashback", gnome},
    {"gnome-xorg", gnome},  {"ubuntu", gnome},        {"unity", gnome},
    {"unity7", gnome},      {"budgie", gnome},        {"budgie-desktop", gnome},
    {"pantheon", gnome},    {"pop", gnome},           {"x-cinnamon", cinnamon},
    {"cinnamon", cinnamon}, {"mate", mate},           {"kde", plasma},
    {"plasma", plasma},     {"plasmax11", plasma},    {"plasmawayland", plasma},
    {"xfce", xfce},
}};

void addOnce(std::vector<PictureSource>& sources, std::initializer_list<PictureSource> more) {
  for (const PictureSource source : more) {
    if (std::ranges::find(sources, source) == sources.end()) sources.push_back(source);
  }
}

std::string percentDecoded(std::string_view text) {
  return QByteArray::fromPercentEncoding(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).toStdString();
}

/// The part after "file:", without the name of this machine.
std::string_view withoutHost(std::string_view rest) {
  for (const std::string_view host : {"//localhost/", "///"}) {
    if (rest.starts_with(host)) return rest.substr(host.size() - 1);
  }
  if (rest.starts_with("//$HOME/")) return rest.substr(2);
  return rest.starts_with("//") ? std::string_view() : rest;
}

std::string plainAddress(std::string_view address) {
  constexpr std::string_view scheme = "file:";
  return address.starts_with(scheme) ? percentDecoded(withoutHost(address.substr(scheme.size())))
                                     : std::string(address);
}

struct PixelSize {
  int width;
  int height;
};

/// "1920x1080.jpg"
std::optional<PixelSize> sizeInName(std::string_view name) {
  const char* const end = name.data() + name.size();
  PixelSize size{};
  const auto width = std::from_chars(name.data(), end, size.width);
  if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
  const auto height = std::from_chars(width.ptr + 1, end, size.height);
  if (height.ec != std::errc() || height.ptr == end || *height.ptr != '.') return std::nullopt;
  return size;
}

std::string ask(const std::vector<std::string>& argv) {
  return commandOutput(argv, commandSeconds, mostSettingsBytes).value_or("");
}

/// Empty if it can't be read.
std::string textOf(const fs::path& file, std::size_t cap = mostSettingsBytes) {
  auto text = readFileBounded(file, cap);
  return text ? *std::move(text) : std::string();
}

/// `folder` is empty if unknown.
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

DesktopSurroundings desktopSurroundings(const Environment& environment) {
  DesktopSurroundings result;
  result.desktops = desktopNames(environment);
  result.wayland = !environment("WAYLAND_DISPLAY").value_or("").empty();
  result.display = environment("DISPLAY").value_or("");
  result.home = homeFolder(environment).value_or("");
  result.config = configFolder(environment).value_or("").parent_path();
  return result;
}

std::vector<PictureSource> pictureSources(const DesktopSurroundings& surroundings) {
  std::vector<PictureSource> sources;
  for (const std::string& name : surroundings.desktops) {
    const auto known = std::ranges::find(desktopsWithSettings, name, [](const auto& entry) { return entry.first; });
    if (known != desktopsWithSettings.end()) addOnce(sources, {known->second});
  }
  const bool unknown = sources.empty();
  const bool onHyprland = std::ranges::find(surroundings.desktops, "hyprland") != surroundings.desktops.end();
  if (surroundings.wayland && onHyprland) addOnce(sources, {hyprpaper, swww, swaybg});
  if (surroundings.wayland && unknown) addOnce(sources, {swaybg, swww, hyprpaper});
  if (!surroundings.wayland && !surroundings.display.empty()) addOnce(sources, {rootPixmap});
  return sources;
}

std::optional<fs::path> localPath(std::string_view address, const fs::path& home) {
  if (address.size() > PATH_MAX) return std::nullopt;
  const std::string plain = plainAddress(address);
  if (plain.find('\0') != plain.npos) return std::nullopt;
  for (const std::string_view start : {"~/", "$HOME/"}) {
    if (!plain.starts_with(start)) continue;
    if (home.empty()) return std::nullopt;
    return home / fs::path(plain.substr(start.size())).relative_path();
  }
  if (!plain.starts_with('/')) return std::nullopt;
  return plain;
}

std::optional<std::string> packagePicture(std::span<const std::string> names, int side) {
  std::optional<std::string> best;
  std::tuple<bool, long long> bestRank;
  for (const std::string& name : names) {
    const auto size = sizeInName(name);
    if (!size || size->width < side || size->height < side) continue;
    const std::tuple rank(size->width < size->height, static_cast<long long>(size->width) * size->height);
    if (best && bestRank <= rank) continue;
    best = name;
    bestRank = rank;
  }
  return best;
}

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
