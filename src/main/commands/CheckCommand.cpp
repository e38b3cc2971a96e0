#include <QCommandLineParser>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/Text.h"
#include "main/commands/Arguments.h"
#include "main/commands/Command.h"
#include "scene/NimbraScript.h"
#include "scene/ScriptError.h"
#include "scene/ScriptReport.h"

namespace veloria {

namespace {

nlohmann::ordered_json toJson(const ScriptReport& report) {
  nlohmann::ordered_json json;
  json["palette"] = nullptr;
  if (report.palette) json["palette"] = *report.palette;
  json["wallpaper"] = report.wallpaper;
  json["values"] = nlohmann::ordered_json::object();
  for (const auto& [keyword, value] : report.values) {
    // JSON has no NaN; only hue can be one.
    json["values"][std::string(keyword)] =
        std::isfinite(value) ? nlohmann::ordered_json(value) : nlohmann::ordered_json();
  }
  return json;
}

}  // namespace

int runCheck(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      "Checks a scene script: says what is wrong with it (\"Line n: message\", exit code 1), or exits 0.");
  parser.addOptions({
      {"channel", "Value of an input channel for --json, such as bass=0.8. May be repeated.", "name=value"},
      {"json", "Print the palette and every parameter's value over the default settings, as JSON."},
  });
  if (!parseArguments(parser, "veloria check", arguments, 1, "FILE")) return done;
  if (parser.positionalArguments().isEmpty()) throw UsageError("no script given. Usage: veloria check FILE");

  ChannelValues channels;
  for (const QString& text : parser.values("channel")) {
    const auto [name, value] = parseChannel("--channel", text.toStdString());
    channels[name] = value;
  }
  const std::string text = readScriptFile(parser.positionalArguments().first().toStdString());
  try {
    const NimbraScript script = NimbraScript::parse(text);
    if (parser.isSet("json")) std::printf("%s\n", toJson(reportOn(script, channels)).dump(2).c_str());
  } catch (const ScriptError& error) {
    std::fprintf(stderr, "%s\n", printable(error.description()).c_str());
    return failed;
  }
  return done;
}

}  // namespace veloria
