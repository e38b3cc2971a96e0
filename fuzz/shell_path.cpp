// What a login shell has printed for its PATH, from any bytes: what is found or chosen must be an absolute path that
// the system was asked about, and nothing may be chosen from what can't be one.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "system/CommandLineTool.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

class AnyPort final : public veloria::CommandLinePort {
 public:
  explicit AnyPort(std::string answer) : answer_(std::move(answer)) {}
  std::string output(const std::vector<std::string>&) override { return answer_; }
  bool isWritableFolder(const std::filesystem::path& folder) override { return seems(folder); }
  bool isRunnable(const std::filesystem::path& file) override { return seems(file); }

 private:
  static bool seems(const std::filesystem::path& path) {
    require(path.is_absolute() && path.native().find('\0') == std::string::npos);
    return path.native().size() % 3 == 0;
  }

  std::string answer_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  AnyPort port(std::string(reinterpret_cast<const char*>(data), size));
  veloria::CommandLineTool tool(port, [](std::string_view) { return std::nullopt; },
                                {.command = "/nowhere/at/all/nimbra", .home = "/nowhere/home", .usual = {}});
  for (const auto& part : tool.shellPathDirectories()) require(!part.empty());
  const auto state = tool.look();
  require(!state.resolvedPath || state.resolvedPath->is_absolute());
  require(!state.installDirectory || state.installDirectory->is_absolute());
  require(!state.installedHere);
  return 0;
}
