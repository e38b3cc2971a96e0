#pragma once

#include <vector>

#include "ports/ScreenProvider.h"

namespace veloria {

/// The screens as the port promises them: what has no size, is larger than 65535 pixels or is no number is left out,
/// and a scale that can't be is 1.
std::vector<Screen> checkedScreens(std::vector<Screen> told);

}  // namespace veloria
