#include "platform/linux/panel/PanelText.h"

#include <system_error>
#include <utility>

#include "base/Files.h"
#include "platform/posix/files/UserFolders.h"

namespace veloria {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t mostBytes = std::size_t{1} << 20;

/// Empty if there is none.
Result<std::string> textOf(const fs::path& sheet) {
  std::error_code ignored;
  if (!fs::exists(sheet, ignored)) return std::string();
  return readFileBounded(sheet, mostBytes);
}

}  // namespace

PanelText::PanelText(const Environment& environment, const std::string& desktop, std::string_view rules)
    : line_("@import url(\"veloria-" + desktop + ".css\");  /* \"veloria panel restore\" removes this line */"),
      rules_(rules) {
  const auto config = configFolder(environment);
  if (!config) return;
  sheet_ = config->parent_path() / "gtk-3.0/gtk.css";
  file_ = sheet_.parent_path() / ("veloria-" + desktop + ".css");
}

PanelSetting PanelText::look() const {
  const auto text = textOf(sheet_);
  return {key, text && text->find(line_) != text->npos, true};
}

Result<Done> PanelText::write(const nlohmann::json& value) const {
  if (sheet_.empty()) return Failure{"There is no home folder for the colour of the panel's text."};
  auto text = textOf(sheet_);
  auto done = !text ? Failure{text.error()} : value == true ? takeIn(*text) : takeOut(*std::move(text));
  return done ? done : Failure{"The colour of the panel's text can't be changed: " + done.error() + "."};
}

Result<Done> PanelText::takeIn(const std::string& text) const {
  if (!makeUserFolder(file_.parent_path())) return Failure{file_.parent_path().string() + ": no folder can be made"};
  auto done = writeFileAtomically(file_, rules_);
  if (!done || text.find(line_) != text.npos) return done;
  // A file without a line feed is one that was not there before.
  std::error_code ignored;
  done = writeFileAtomically(sheet_, fs::exists(sheet_, ignored) ? line_ + "\n" + text : line_);
  if (!done) fs::remove(file_, ignored);
  return done;
}

Result<Done> PanelText::takeOut(std::string text) const {
  std::error_code error;
  if (text == line_) {
    fs::remove(fs::canonical(sheet_, error), error);
    if (error) return Failure{sheet_.string() + ": " + error.message()};
  } else if (text.find(line_) != text.npos) {
    for (const std::string& each : {line_ + "\n", line_}) {
      for (auto start = text.find(each); start != text.npos; start = text.find(each)) text.erase(start, each.size());
    }
    if (auto done = writeFileAtomically(sheet_, text); !done) return done;
  }
  fs::remove(file_, error);
  return Done{};
}

}  // namespace veloria
