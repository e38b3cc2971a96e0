#include "platform/linux/wallpaper/PictureFile.h"

#include <cerrno>
#include <cstring>

namespace veloria {

namespace {

constexpr off_t mostFileBytes = off_t{256} << 20;

Failure about(const std::filesystem::path& path, const std::string& problem) {
  return {path.native() + ": " + problem};
}

}  // namespace

Result<PictureFile::Pixels> PictureFile::thumbnail(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return about(path, std::strerror(errno));
  if (!S_ISREG(status.st_mode)) return about(path, "it is no file");
  if (status.st_size > mostFileBytes) return about(path, "it is too large");
  const Identity identity{path,           status.st_dev,         status.st_ino,
                          status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  if (last_ != identity) {
    const auto pixels = decode_(path);
    lastResult_ = pixels ? pixels : about(path, pixels.error());
    last_ = identity;
  }
  return lastResult_;
}

}  // namespace veloria
