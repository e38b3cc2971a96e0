#pragma once

#include "app/AppStatus.h"
#include "render/RenderStats.h"
#include "render/ScreenProvider.h"
#include "ui/Readouts.h"

namespace veloria {

/// What the settings window tells of this status. `mainScreen` may be null; no figures are given while nothing is
/// drawn.
Readouts readoutsOf(const AppStatus& status, const RenderStats::Figures& figures, const Screen* mainScreen);

}  // namespace veloria
