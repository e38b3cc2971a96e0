#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ports/SystemPort.h"

namespace veloria {

/// The path of this program's own nimbra: beside `executable`, or in the folder `bin` beside its folder; the former if
/// neither exists. `executable` is absolute. Any thread.
std::filesystem::path commandBeside(const std::filesystem::path& executable);

/// The system's side of the installer of the command-line tool. Programs have `seconds` and 256 KiB to answer. Any
/// thread.
class PosixCommandLine final : public CommandLinePort {
 public:
  explicit PosixCommandLine(double seconds = 5) : seconds_(seconds) {}

  std::string output(const std::vector<std::string>& argv) override;
  bool isWritableFolder(const std::filesystem::path& folder) override;
  bool isRunnable(const std::filesystem::path& file) override;

 private:
  double seconds_;
};

}  // namespace veloria
