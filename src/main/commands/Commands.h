#pragma once

#include <QStringList>

namespace veloria {

/// The commands. Each takes its own arguments, without its name, and returns the exit code. Errors are thrown; see
/// runCommand().

int runRender(const QStringList& arguments);   ///< draws frames without a display
int runBench(const QStringList& arguments);    ///< measures
int runCheck(const QStringList& arguments);    ///< checks a scene script
int runStatus(const QStringList& arguments);   ///< asks the running band
int runDevices(const QStringList& arguments);  ///< lists the GPUs

/// The band itself. Makes the application object of the event loop, so there must be none yet.
int runApplication(int& argc, char** argv);

/// Does nothing unless the program was started as a helper process of its own; else does that work and ends the
/// process. To be called first of all.
void runHelper(int argc, char** argv);

}  // namespace veloria
