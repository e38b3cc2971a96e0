#pragma once

#include <memory>

#include "base/Environment.h"
#include "ports/PanelClearing.h"

namespace veloria {

/// Clears GNOME's panel by an extension for GNOME Shell that comes with Veloria; null if XDG_CURRENT_DESKTOP names
/// another desktop. The extension clears the panel only while setWanted(true) holds and this process runs.
///
/// GNOME Shell may be absent, start late or again, answer with an error, send nonsense or not answer. A shell that has
/// not found the extension yet, because it was installed after log-in, gets it switched on in a later run.
///
/// Reads XDG_CURRENT_DESKTOP, XDG_SESSION_DESKTOP, XDG_DATA_HOME, XDG_DATA_DIRS, XDG_STATE_HOME and HOME. Uses the
/// session bus. Main thread, with a QCoreApplication that outlives it; waits for the bus when it is made, never for the
/// shell.
std::unique_ptr<PanelClearing> makeGnomePanelClearing(const Environment& environment);

}  // namespace veloria
