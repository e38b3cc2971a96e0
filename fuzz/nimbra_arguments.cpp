// nimbra's command lines: the bytes between zeroes are the arguments. What is refused gets one line that a terminal can
// show.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "base/ExitCode.h"
#include "base/PlainText.h"
#include "cli/CommandLine.h"
#include "cli/Operands.h"

namespace {

using namespace veloria;
using namespace veloria::cli;

void require(bool condition) {
  if (!condition) std::abort();
}

std::vector<std::string> split(std::string_view bytes) {
  std::vector<std::string> parts(1);
  for (const char c : bytes) {
    if (c == '\0') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

void check(const CommandLine& line) {
  if (line.session) require(veloria::isPlainText(*line.session, longestName));
  if (line.ttl) require(*line.ttl > 0 && std::isfinite(*line.ttl));
  for (const auto& operand : line.operands) {
    if (const auto colour = normalisedColour(operand)) require(colour->size() == 7);
    static_cast<void>(channelName(operand));
    static_cast<void>(finiteNumber("NUMBER", operand));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto arguments = split({reinterpret_cast<const char*>(data), size});
  const CommandDescription* command = findCommand(arguments.front());
  if (command == nullptr) return 0;
  arguments.erase(arguments.begin());
  try {
    check(parseCommandLine(*command, arguments));
  } catch (const UsageError& error) {
    const std::string text = error.what();
    require(!text.empty() && veloria::isPlainText(text, text.size()));
  }
  return 0;
}
