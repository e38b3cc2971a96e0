#pragma once

#include <QCommandLineParser>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Geometry.h"
#include "gpu/Types.h"
#include "ports/ScreenProvider.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// Values on a command line. Each throws UsageError, naming the option, when the text is not what it should be.

/// "1920x32": pixels, 1 to 16384 each.
gpu::Size parsePixelSize(const std::string& option, const std::string& text);

/// "200x32": points, above 0 and at most 16384 each.
Extent parseExtent(const std::string& option, const std::string& text);

/// "top" or "bottom".
PanelEdge parseEdge(const std::string& option, const std::string& text);

/// A number from `low` to `high`.
double parseNumber(const std::string& option, const std::string& text, double low, double high);

/// A whole number from `low` to `high`.
long parseCount(const std::string& option, const std::string& text, long low, long high);

/// "name=value" with a name that is not empty.
std::pair<std::string, std::string> parseAssignment(const std::string& option, const std::string& text);

/// "bass=0.5": a channel, its name in lower case, and a finite number.
std::pair<std::string, double> parseChannel(const std::string& option, const std::string& text);

/// "X,Y" or "X,Y,DX,DY": finite numbers.
std::vector<double> parsePointer(const std::string& option, const std::string& text);

/// "#102030" as red, green, blue from 0 to 255; nothing when it does not begin with "#".
std::optional<std::array<unsigned char, 3>> parseColor(const std::string& option, const std::string& text);

/// A file name with one place for the frame's number ("frame-%05d.png"), or without any.
struct FramePattern {
  std::string before;
  std::string after;
  int digits = 0;
  bool numbered = false;

  std::string fileFor(long frame) const;
};
FramePattern parseFramePattern(const std::string& option, const std::string& text);

/// --config, --preset, --set and --script, which build the record that a command works with.
void addConfigOptions(QCommandLineParser& parser);

/// The defaults with what was asked for laid over them, in that order. Nothing else is read: no stored settings and no
/// environment. Throws UsageError for a wrong option, WorkError for a file that is not what it should be.
NimbraConfig configFrom(const QCommandLineParser& parser);

/// The text of a script file of at most 1 MiB, without the byte order mark that some editors put first. Throws
/// WorkError.
std::string readScriptFile(const std::string& path);

}  // namespace veloria
