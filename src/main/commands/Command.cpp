#include "main/commands/Command.h"

#include <clocale>
#include <cstdio>
#include <exception>

namespace veloria {

namespace {

int fail(const std::string& name, const std::string& text, ExitCode code) {
  std::string line = name + ": " + text;
  while (line.ends_with('\n')) line.pop_back();
  std::fprintf(stderr, "%s\n", line.c_str());
  return code;
}

}  // namespace

void keepNumbersPlain() {
  std::setlocale(LC_NUMERIC, "C");
}

int runCommand(const std::string& name, const std::function<int()>& body) {
  try {
    return body();
  } catch (const UsageError& error) {
    return fail(name, error.what(), wrongUsage);
  } catch (const std::exception& error) {
    return fail(name, error.what(), failed);
  }
}

bool parseArguments(QCommandLineParser& parser, const std::string& name, const QStringList& arguments,
                    int maximumPositional, const std::string& plainArguments) {
  parser.addOption({{"h", "help"}, "Show this help."});
  QStringList all = arguments;
  all.prepend(QString::fromStdString(name));
  if (!parser.parse(all)) {
    throw UsageError(parser.errorText().toStdString() + " See '" + name + " --help'.");
  }
  if (parser.isSet("help")) {
    // The library's own usage line knows the program's name only.
    QString text = parser.helpText();
    text.remove(0, text.indexOf('\n') + 1);
    std::printf("Usage: %s [options]%s%s\n%s", name.c_str(), plainArguments.empty() ? "" : " ", plainArguments.c_str(),
                text.toStdString().c_str());
    return false;
  }
  if (parser.positionalArguments().size() > maximumPositional) {
    throw UsageError("unexpected argument '" + parser.positionalArguments().at(maximumPositional).toStdString() +
                     "'. See '" + name + " --help'.");
  }
  return true;
}

}  // namespace veloria
