#pragma once

#include "app/AppStatus.h"
#include "ports/ScreenProvider.h"
#include "ui/cards/Readouts.h"

namespace veloria {

/// What the settings window tells of this status. The figures are those of `mainScreen`, which may be null; there are
/// none while nothing is drawn.
Readouts readoutsOf(const AppStatus& status, const Screen* mainScreen);

}  // namespace veloria
