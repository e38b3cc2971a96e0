#pragma once

#include <QCommandLineParser>
#include <QStringList>
#include <functional>
#include <stdexcept>
#include <string>

#include "base/ExitCode.h"

namespace veloria {

/// The work failed, or a file is not what it should be.
class WorkError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Numbers in messages have a point whatever the user's language. To be called once there is an application object of
/// Qt, which sets that language.
void keepNumbersPlain();

/// Runs `body`, turns what it throws into one line on standard error ("veloria render: ...") and an exit code.
int runCommand(const std::string& name, const std::function<int()>& body);

/// Parses `arguments` (the command's own, without its name) with a parser that knows its options already. Prints the
/// help and returns false when it was asked for. Throws UsageError for an unknown option, a missing value, or more
/// than `maximumPositional` plain arguments.
bool parseArguments(QCommandLineParser& parser, const std::string& name, const QStringList& arguments,
                    int maximumPositional, const std::string& plainArguments = {});

}  // namespace veloria
