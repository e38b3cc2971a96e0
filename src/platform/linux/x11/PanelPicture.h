#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "platform/linux/screens/ScreenDescription.h"

namespace veloria {

/// What one panel shows in a part of the screen.
struct PanelPicture {
  PixelRect bounds;  ///< root pixels
  bool hasAlpha = false;
  /// The parts of `bounds` that the panel has, root pixels; empty: all of it.
  std::vector<PixelRect> shape;
  /// Of `bounds`, tightly packed from the top: blue, green, red, alpha, premultiplied. Alpha means nothing without
  /// `hasAlpha`. Any other number of bytes than `bounds` needs shows nothing.
  std::vector<std::byte> pixels;
};

/// Lays `panels` (bottom to top) over each other on a transparent ground. `rows` becomes the picture of `strip`:
/// tightly packed from the top, blue, green, red, alpha, premultiplied.
void composePanels(const PixelRect& strip, std::span<const PanelPicture* const> panels, std::vector<std::byte>& rows);

/// Gives the part of a composed picture that no panel covers the mean colour of the panels' pixels beside it.
/// Text is recognised by its contrast, so a panel's edge would count as text otherwise. A picture without panels, or
/// full of them, stays as it is. `rows`: as composePanels() left them.
void hidePanelEdges(const PixelRect& strip, std::span<const PanelPicture* const> panels, std::vector<std::byte>& rows);

}  // namespace veloria
