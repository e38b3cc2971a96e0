#include "language_case.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace veloria::test {

namespace {

void appendUtf8(std::string& out, unsigned codePoint) {
  const auto trail = [&](unsigned shift) { out += static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU)); };
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0U | (codePoint >> 6U));
    trail(0);
  } else if (codePoint < 0x10000) {
    out += static_cast<char>(0xE0U | (codePoint >> 12U));
    trail(6), trail(0);
  } else {
    out += static_cast<char>(0xF0U | (codePoint >> 18U));
    trail(12), trail(6), trail(0);
  }
}

/// Reads "{HEX}" at `at` and moves past it.
unsigned bracedHex(const std::string& text, std::size_t& at) {
  const auto close = text.find('}', at);
  unsigned value = 0;
  if (text[at] != '{' || close == std::string::npos ||
      std::from_chars(&text[at + 1], &text[close], value, 16).ptr != &text[close]) {
    throw std::runtime_error("not an escape: " + text);
  }
  at = close + 1;
  return value;
}

class Reader {
 public:
  explicit Reader(const std::filesystem::path& path) : name_(path.filename().string()), in_(path) {}

  void readInto(std::vector<LanguageCase>& cases) {
    next();
    while (more_) cases.push_back(readCase());
  }

 private:
  LanguageCase readCase() {
    LanguageCase result;
    result.file = name_;
    result.line = number_;
    if (!line_.starts_with("=== ")) fail("a title is missing");
    result.title = line_.substr(4);
    for (next(); more_ && line_ != "---"; next()) readHeader(result);
    if (result.expectations.empty()) fail("a case without expectation");
    std::string separator;
    for (next(); more_ && !line_.starts_with("=== "); next()) {
      result.script += separator + unescaped(line_);
      separator = "\n";
    }
    return result;
  }

  void readHeader(LanguageCase& result) {
    std::istringstream words(line_);
    std::string kind, name;
    double value = 0;
    words >> kind;
    if (kind == "expect") {
      result.expectations.push_back(line_.substr(7));
    } else if (kind == "channel" && words >> name >> value) {
      result.channels[name] = value;
    } else {
      fail("neither an expectation nor a channel: " + line_);
    }
  }

  void next() {
    more_ = static_cast<bool>(std::getline(in_, line_));
    ++number_;
  }

  [[noreturn]] void fail(const std::string& why) const {
    throw std::runtime_error(name_ + ":" + std::to_string(number_) + ": " + why);
  }

  std::string name_;
  std::ifstream in_;
  std::string line_;
  int number_ = 0;
  bool more_ = true;
};

}  // namespace

std::string unescaped(const std::string& text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] != '\\') {
      out += text[at++];
      continue;
    }
    const char kind = at + 1 < text.size() ? text[at + 1] : '\0';
    at += 2;
    constexpr std::string_view names = "nrt\\";
    if (const auto plain = names.find(kind); plain != std::string_view::npos) {
      out += "\n\r\t\\"[plain];
    } else if (kind == 'u') {
      appendUtf8(out, bracedHex(text, at));
    } else if (kind == 'x') {
      out += static_cast<char>(bracedHex(text, at));
    } else {
      throw std::runtime_error("not an escape: " + text);
    }
  }
  return out;
}

std::vector<LanguageCase> loadLanguageCases(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.path().extension() == ".scene") files.push_back(entry.path());
  }
  std::ranges::sort(files);
  std::vector<LanguageCase> cases;
  for (const auto& file : files) Reader(file).readInto(cases);
  if (cases.empty()) throw std::runtime_error("no cases below " + folder.string());
  return cases;
}

std::ostream& operator<<(std::ostream& out, const LanguageCase& languageCase) {
  return out << languageCase.file << ":" << languageCase.line << " " << languageCase.title;
}

}  // namespace veloria::test
