#include "platform/posix/process/PosixCommandLine.h"

#include "platform/posix/process/Programs.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

// The kernel takes no variable above 128 KiB, so no PATH is longer; as much again for what profiles print.
constexpr std::size_t mostBytes = std::size_t{256} << 10;

}  // namespace

fs::path commandBeside(const fs::path& executable) {
  const fs::path folder = executable.parent_path();
  for (const fs::path& candidate : {folder / "nimbra", folder.parent_path() / "bin" / "nimbra"}) {
    if (isRunnable(candidate)) return candidate;
  }
  return folder / "nimbra";
}

std::string PosixCommandLine::output(const std::vector<std::string>& argv) {
  auto output = runProgram(argv, seconds_, mostBytes);
  return output ? std::move(output->text) : std::string();
}

bool PosixCommandLine::isWritableFolder(const fs::path& folder) {
  return veloria::isWritableFolder(folder);
}

bool PosixCommandLine::isRunnable(const fs::path& file) {
  return veloria::isRunnable(file);
}

}  // namespace veloria
