#include "platform/posix/process/Programs.h"

#include <fcntl.h>
#include <unistd.h>

#include <QProcess>
#include <system_error>

#include "base/TextLines.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

/// As the user who is in charge now, not the one who started the process.
bool mayAccess(const fs::path& path, int mode) {
  return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

}  // namespace

bool isRunnable(const fs::path& file) {
  std::error_code error;
  return fs::is_regular_file(file, error) && mayAccess(file, X_OK);
}

bool isWritableFolder(const fs::path& folder) {
  std::error_code error;
  return fs::is_directory(folder, error) && mayAccess(folder, W_OK | X_OK);
}

std::optional<fs::path> findProgram(const std::string& name, std::string_view searchPath) {
  for (const std::string_view folder : splitText(searchPath, ':')) {
    const fs::path candidate = fs::path(folder) / name;
    if (candidate.is_absolute() && isRunnable(candidate)) return candidate;
  }
  return std::nullopt;
}

Result<Done> startDetached(const fs::path& program, const std::vector<std::string>& arguments) {
  QProcess process;
  process.setProgram(QString::fromStdString(program.string()));
  QStringList words;
  for (const std::string& argument : arguments) words << QString::fromStdString(argument);
  process.setArguments(words);
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
  if (!process.startDetached()) return Failure{program.string() + " could not be started."};
  return Done{};
}

}  // namespace veloria
