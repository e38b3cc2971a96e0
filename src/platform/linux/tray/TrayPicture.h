#pragma once

#include <QIcon>

namespace veloria {

/// What the panel behind an icon is like.
enum class PanelShade { dark, light };

/// The program's status icon: a large four-pointed star and two small ones, in one colour that stands out from such a
/// panel, with a faint edge that keeps it visible on the other kind. In the sizes that panels ask for.
QIcon sparkles(PanelShade panel);

}  // namespace veloria
