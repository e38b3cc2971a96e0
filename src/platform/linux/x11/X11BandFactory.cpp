#include "platform/linux/x11/X11BandFactory.h"

#include <xcb/composite.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/linux/screens/PanelHint.h"

namespace veloria {

namespace {

constexpr double seeThroughAlpha = 0.9;
constexpr double opaque = 0xFFFFFFFFU;
constexpr std::uint8_t depthWithAlpha = 32;

// The share of the strip's width that panels of one kind cover.
double coveredShare(const PixelRect& strip, std::span<const PanelFacts> panels, SeeThrough kind,
                    bool compositorRunning) {
  std::vector<std::pair<int, int>> spans;
  for (const PanelFacts& panel : panels) {
    const PixelRect shared = intersection(panel.bounds, strip);
    if (seeThrough(panel, compositorRunning) == kind && !shared.empty()) spans.emplace_back(shared.x, shared.right());
  }
  std::sort(spans.begin(), spans.end());
  int covered = 0;
  int reached = strip.x;
  for (const auto& [start, end] : spans) {
    covered += std::max(0, end - std::max(start, reached));
    reached = std::max(reached, end);
  }
  return strip.width > 0 ? static_cast<double>(covered) / strip.width : 0;
}

}  // namespace

SeeThrough seeThrough(const PanelFacts& panel, bool compositorRunning) {
  if (!compositorRunning) return SeeThrough::no;
  if (panel.opacity / opaque < seeThroughAlpha) return SeeThrough::yes;
  if (panel.depth != depthWithAlpha) return SeeThrough::no;
  if (!panel.meanAlpha) return SeeThrough::unknown;
  return *panel.meanAlpha < seeThroughAlpha ? SeeThrough::yes : SeeThrough::no;
}

namespace {

/// Whether covering panels leave nothing of `area` free.
bool isCovered(const PixelRect& area, std::span<const PanelFacts> panels) {
  if (area.empty()) return true;
  for (std::size_t i = 0; i < panels.size(); ++i) {
    const PixelRect shared = intersection(area, panels[i].bounds);
    if (!panels[i].covers || shared.empty()) continue;
    const auto others = panels.subspan(i + 1);
    return isCovered({area.x, area.y, area.width, shared.y - area.y}, others) &&
           isCovered({area.x, shared.bottom(), area.width, area.bottom() - shared.bottom()}, others) &&
           isCovered({area.x, shared.y, shared.x - area.x, shared.height}, others) &&
           isCovered({shared.right(), shared.y, area.right() - shared.right(), shared.height}, others);
  }
  return false;
}

}  // namespace

Visibility visibilityUnder(const PixelRect& strip, PanelEdge edge, std::span<const PanelFacts> panels,
                           bool compositorRunning) {
  using Kind = Visibility::Kind;
  if (!strip.empty() && isCovered(strip, panels)) return {Kind::hidden, opaquePanelHint(edge)};
  const double hidden = coveredShare(strip, panels, SeeThrough::no, compositorRunning);
  const double unknown = coveredShare(strip, panels, SeeThrough::unknown, compositorRunning);
  if (hidden >= 0.5) return {Kind::mayBeHidden, opaquePanelHint(edge)};
  if (hidden + unknown >= 0.5) return {Kind::mayBeHidden, unknownPanelHint(edge)};
  return {};
}

namespace {

constexpr std::uint32_t allPlanes = 0xFFFFFFFFU;
constexpr std::uint32_t colorPlanes = 0x00FFFFFFU;
constexpr std::uint32_t allOfIt = 0xFFFFFFFFU;
constexpr std::uint8_t depthOfColor = 24;
constexpr double solidAlpha = 0.999;
constexpr double sameShare = 0.98;
constexpr int sampledRows = 5;
constexpr std::size_t bytesPerPixel = 4;

const xcb_visualtype_t* visualWithAlpha(const xcb_screen_t& screen) {
  for (auto depth = xcb_screen_allowed_depths_iterator(&screen); depth.rem > 0; xcb_depth_next(&depth)) {
    if (depth.data->depth != depthWithAlpha) continue;
    for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem > 0; xcb_visualtype_next(&it)) {
      if (it.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR) return it.data;
    }
  }
  return nullptr;
}

BandVisual chooseVisual(X11Connection& connection) {
  const xcb_screen_t& screen = connection.screen();
  const auto* visual = visualWithAlpha(screen);
  if (visual == nullptr) return {screen.root_depth, screen.root_visual, screen.default_colormap};
  const xcb_colormap_t colormap = xcb_generate_id(connection.raw());
  xcb_create_colormap(connection.raw(), XCB_COLORMAP_ALLOC_NONE, colormap, screen.root, visual->visual_id);
  return {depthWithAlpha, visual->visual_id, colormap};
}

using Pixels = std::vector<std::uint32_t>;  ///< red, green and blue in some order

/// Empty if they can't be read.
Pixels rowOf(X11Connection& connection, xcb_drawable_t drawable, int x, int y, int width) {
  const auto image =
      connection.reply(xcb_get_image_reply, xcb_get_image(connection.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable,
                                                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                                          static_cast<std::uint16_t>(width), 1, colorPlanes));
  if (!image || (image->depth != depthWithAlpha && image->depth != depthOfColor)) return {};
  const auto length = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
  Pixels pixels(length / bytesPerPixel);
  std::memcpy(pixels.data(), xcb_get_image_data(image.get()), pixels.size() * bytesPerPixel);
  for (std::uint32_t& pixel : pixels) pixel &= colorPlanes;
  return pixels;
}

struct AlphaSum {
  double sum = 0;
  std::size_t count = 0;
};

void addRow(X11Connection& connection, xcb_pixmap_t pixmap, int y, std::uint16_t width, AlphaSum& total) {
  const auto image =
      connection.reply(xcb_get_image_reply, xcb_get_image(connection.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0,
                                                          static_cast<std::int16_t>(y), width, 1, allPlanes));
  if (!image || image->depth != depthWithAlpha) return;
  const bool lowFirst = xcb_get_setup(connection.raw())->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
  const auto* bytes = xcb_get_image_data(image.get());
  const auto length = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
  for (std::size_t i = lowFirst ? bytesPerPixel - 1 : 0; i < length; i += bytesPerPixel) {
    total.sum += bytes[i] / 255.0;
    ++total.count;
  }
}

}  // namespace

X11BandFactory::X11BandFactory(X11Connection& connection, X11ScreenProvider& screens, SurfaceMaker makeSurface)
    : connection_(connection), screens_(screens), makeSurface_(std::move(makeSurface)) {
  if (!connection_.shape().present) {
    throw std::runtime_error(
        "The X server lacks the SHAPE extension (1.1), without which an overlay would take the clicks.");
  }
  visual_ = chooseVisual(connection_);
}

std::unique_ptr<OverlayPanel> X11BandFactory::makePanel(const Screen& screen) {
  auto panel = std::make_unique<X11Band>(connection_, screens_, visual_, makeSurface_);
  panel->setFrame(screen.frame, screen.backingScale);
  return panel;
}

Visibility X11BandFactory::visibility(const Screen& screen, const Rect& band, OverlayLevel level) {
  const PixelRect strip = screens_.clippedToScreen(screens_.space().toPixels(band, screen.backingScale));
  const PanelEdge edge = screen.edgeOf(band);
  std::vector<PanelFacts> facts;
  for (const DockWindow& dock : findDocks(connection_)) {
    if (dock.isDock && dock.viewable && intersects(dock.bounds, strip)) facts.push_back(factsOf(dock, strip));
  }
  if (facts.empty() && screen.reserved(edge) > 0) return {Visibility::Kind::mayBeHidden, desktopsOwnPanelHint(edge)};
  if (level != OverlayLevel::desktop) return {};
  return visibilityUnder(strip, edge, facts, connection_.compositorRunning());
}

PanelFacts X11BandFactory::factsOf(const DockWindow& dock, const PixelRect& strip) {
  PanelFacts facts;
  facts.bounds = dock.bounds;
  facts.depth = dock.depth;
  const xcb_window_t topLevel = topLevelOf(connection_, dock.window);
  for (const xcb_window_t window : {dock.window, topLevel}) {
    const auto opacity = connection_.numbers(window, X11Atom::netWmWindowOpacity, 1);
    if (!opacity.empty()) facts.opacity = std::min(facts.opacity, opacity.front());
  }
  const bool composited = connection_.compositorRunning();
  if (dock.depth == depthWithAlpha && composited) facts.meanAlpha = meanAlpha(topLevel);
  const bool solid = dock.depth != depthWithAlpha || facts.meanAlpha.value_or(0) > solidAlpha;
  // Window managers may give a frame that is a plain rectangle a shape.
  const auto place = probePanel(connection_, dock.window, {});
  const bool whole = place && place->shape.empty();
  facts.covers =
      whole &&
      (!composited || (solid && facts.opacity == allOfIt && isShownAsItIs(topLevel, intersection(dock.bounds, strip))));
  return facts;
}

// Compares some rows of a redirected window with what the screen shows there.
bool X11BandFactory::isShownAsItIs(xcb_window_t topLevel, const PixelRect& area) {
  if (!connection_.composite().present || topLevel == XCB_WINDOW_NONE) return false;
  auto* raw = connection_.raw();
  const auto place = connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(raw, topLevel));
  if (!place) return false;
  const xcb_pixmap_t pixmap = xcb_generate_id(raw);
  xcb_composite_name_window_pixmap(raw, topLevel, pixmap);
  std::size_t same = 0;
  std::size_t all = 0;
  for (int row = 0; row < sampledRows; ++row) {
    const int y = area.y + (2 * row + 1) * area.height / (2 * sampledRows);
    const Pixels own = rowOf(connection_, pixmap, area.x - place->x, y - place->y, area.width);
    const Pixels shown = rowOf(connection_, connection_.root(), area.x, y, area.width);
    for (std::size_t i = 0; i < std::min(own.size(), shown.size()); ++i) same += own[i] == shown[i] ? 1 : 0;
    all += static_cast<std::size_t>(area.width);
  }
  xcb_free_pixmap(raw, pixmap);
  return all > 0 && static_cast<double>(same) >= sameShare * static_cast<double>(all);
}

// Only a redirected window has a pixmap of its own: what is behind it is not in there.
std::optional<double> X11BandFactory::meanAlpha(xcb_window_t topLevel) {
  if (!connection_.composite().present || topLevel == XCB_WINDOW_NONE) return std::nullopt;
  const xcb_pixmap_t pixmap = xcb_generate_id(connection_.raw());
  xcb_composite_name_window_pixmap(connection_.raw(), topLevel, pixmap);
  const auto geometry = connection_.reply(xcb_get_geometry_reply, xcb_get_geometry(connection_.raw(), pixmap));
  if (!geometry) return std::nullopt;
  AlphaSum total;
  if (geometry->depth == depthWithAlpha) {
    for (int row = 0; row < sampledRows; ++row) {
      addRow(connection_, pixmap, (2 * row + 1) * geometry->height / (2 * sampledRows), geometry->width, total);
    }
  }
  xcb_free_pixmap(connection_.raw(), pixmap);
  if (total.count == 0) return std::nullopt;
  return total.sum / static_cast<double>(total.count);
}

}  // namespace veloria
