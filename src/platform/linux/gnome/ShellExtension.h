#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>
#include <string>

#include "base/Environment.h"

namespace veloria {

inline const QString shellService = QStringLiteral("org.gnome.Shell");

/// The identifier of Veloria's extension for this version of GNOME Shell, such as "43.9" or "45.alpha"; nothing for
/// versions before 42 and for text that is none.
std::optional<QString> shellExtensionFor(const QString& version);

/// What GNOME Shell says about one extension.
struct ShellExtension {
  enum class State { unknown, enabled, disabled, failed, outOfDate };
  State state = State::unknown;
  std::string error;  ///< for `failed`; may be empty
};

/// From the reply of GetExtensionInfo, which is empty for an extension that the shell has not found. Anything else that
/// is not a state counts as unknown.
ShellExtension shellExtensionIn(const QVariantMap& info);

/// True if the extension is in a folder that a shell which starts now would look into. Asks the disk.
bool isShellExtensionInstalled(const QString& uuid, const Environment& environment);

}  // namespace veloria
