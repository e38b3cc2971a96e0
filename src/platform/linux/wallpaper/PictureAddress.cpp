#include "platform/linux/wallpaper/PictureAddress.h"

#include <QByteArray>
#include <climits>
#include <string>

namespace veloria {

namespace fs = std::filesystem;

namespace {

std::string percentDecoded(std::string_view text) {
  return QByteArray::fromPercentEncoding(QByteArray(text.data(), static_cast<qsizetype>(text.size()))).toStdString();
}

/// What stands behind "file:", without the name of this machine.
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

}  // namespace

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

}  // namespace veloria
