#include "base/StrictJson.h"

#include <algorithm>
#include <optional>
#include <string>

namespace veloria {

namespace {

std::string at(std::string_view bytes, std::size_t offset, const std::string& reason) {
  const std::string_view before = bytes.substr(0, offset);
  const auto line = std::ranges::count(before, '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 when there is none
  return "line " + std::to_string(line) + ", column " + std::to_string(offset - lineStart + 1) + ": " + reason;
}

/// The offset of the first bracket that nests too deep. Counts brackets outside strings; the parser checks that they
/// match.
std::optional<std::size_t> tooDeepAt(std::string_view bytes) {
  int depth = 0;
  bool inString = false;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (inString) {
      if (c == '\\') ++i;
      if (c == '"') inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > maximumJsonDepth) return i;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return std::nullopt;
}

/// The reason in the parser's message, without the text that it read, which may be long.
std::string reasonIn(std::string_view message) {
  const std::size_t dash = message.find(" - ");
  if (dash == std::string_view::npos) return "not valid JSON";
  const std::string_view reason = message.substr(dash + 3);
  return std::string(reason.substr(0, std::min(reason.find("; last read"), reason.find("; expected"))));
}

}  // namespace

Result<nlohmann::json> parseStrictJson(std::string_view bytes) {
  if (bytes.size() > maximumJsonBytes) return Failure{"larger than " + std::to_string(maximumJsonBytes) + " bytes"};
  if (const auto offset = tooDeepAt(bytes)) {
    return Failure{at(bytes, *offset, "nested deeper than " + std::to_string(maximumJsonDepth) + " levels")};
  }
  // The parser takes a zero byte for the end and would not see what follows.
  if (const std::size_t zero = bytes.find('\0'); zero != bytes.npos) return Failure{at(bytes, zero, "a zero byte")};
  try {
    return nlohmann::json::parse(bytes.begin(), bytes.end());
  } catch (const nlohmann::json::parse_error& error) {
    const std::size_t offset = std::min(error.byte > 0 ? error.byte - 1 : 0, bytes.size());
    return Failure{at(bytes, offset, reasonIn(error.what()))};
  } catch (const nlohmann::json::exception&) {
    return Failure{"a number is too large"};
  }
}

}  // namespace veloria
