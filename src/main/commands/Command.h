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

/// Makes numbers in messages have a decimal point in every language. Call it after Qt's application object is made,
/// which sets the language.
void keepNumbersPlain();

/// Runs `body`, turns what it throws into one line on standard error ("veloria render: ...") and an exit code.
int runCommand(const std::string& name, const std::function<int()>& body);

/// Parses `arguments` (the command's own, without its name) with a parser that knows its options already. Prints the
/// help and returns false if it was requested. Throws UsageError for an unknown option, a missing value, or more
/// than `maximumPositional` plain arguments.
bool parseArguments(QCommandLineParser& parser, const std::string& name, const QStringList& arguments,
                    int maximumPositional, const std::string& plainArguments = {});

/// The commands. Each takes its own arguments, without its name, and returns the exit code. Errors are thrown; see
/// runCommand().

int runRender(const QStringList& arguments);   ///< draws frames without a display
int runBench(const QStringList& arguments);    ///< measures
int runCheck(const QStringList& arguments);    ///< checks a scene script
int runStatus(const QStringList& arguments);   ///< asks the running band
int runPanel(const QStringList& arguments);    ///< makes the desktop's panel clear, or puts it back
int runDevices(const QStringList& arguments);  ///< lists the GPUs

/// The band itself. Makes the application object of the event loop, so there must be none yet.
int runApplication(int& argc, char** argv);

}  // namespace veloria
