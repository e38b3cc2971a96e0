#pragma once

#include <QCommandLineParser>

#include "settings/NimbraConfig.h"

namespace veloria {

/// --config, --preset, --set and --script, which build the record that a command works with.
void addConfigOptions(QCommandLineParser& parser);

/// The defaults with what was asked for laid over them, in that order. Nothing else is read: no stored settings and no
/// environment. Throws UsageError for a wrong option, WorkError for a file that is not what it should be.
NimbraConfig configFrom(const QCommandLineParser& parser);

/// The text of a script file of at most 1 MiB, without the byte order mark that some editors put first. Throws
/// WorkError.
std::string readScriptFile(const std::string& path);

}  // namespace veloria
