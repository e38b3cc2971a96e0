#include "platform/linux/x11/X11BandFactory.h"

#include <xcb/composite.h>

#include <algorithm>
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

std::string panelHint(const PixelRect& strip, std::span<const PanelFacts> panels, bool compositorRunning) {
  const double hidden = coveredShare(strip, panels, SeeThrough::no, compositorRunning);
  const double unknown = coveredShare(strip, panels, SeeThrough::unknown, compositorRunning);
  if (hidden >= 0.5) return opaquePanelHint();
  return hidden + unknown >= 0.5 ? unknownPanelHint() : std::string();
}

namespace {

constexpr std::uint32_t allPlanes = 0xFFFFFFFFU;
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

PixelRect stripOf(const Screen& screen, const ScreenSpace& space) {
  const double height = std::max(screen.frame.maxY() - screen.visibleFrame.maxY(), screen.statusBarThickness);
  const Rect strip{screen.frame.x, screen.frame.maxY() - height, screen.frame.width, height};
  return space.toPixels(strip, screen.backingScale);
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

std::string X11BandFactory::visibilityHint(const Screen& screen, OverlayLevel level) {
  if (level != OverlayLevel::desktop) return {};
  const PixelRect strip = stripOf(screen, screens_.space());
  std::vector<PanelFacts> facts;
  for (const DockWindow& dock : findDocks(connection_)) {
    if (dock.isDock && dock.viewable && intersects(dock.bounds, strip)) facts.push_back(factsOf(dock));
  }
  return panelHint(strip, facts, connection_.compositorRunning());
}

PanelFacts X11BandFactory::factsOf(const DockWindow& dock) {
  PanelFacts facts;
  facts.bounds = dock.bounds;
  facts.depth = dock.depth;
  const xcb_window_t topLevel = topLevelOf(connection_, dock.window);
  for (const xcb_window_t window : {dock.window, topLevel}) {
    const auto opacity = connection_.numbers(window, X11Atom::netWmWindowOpacity, 1);
    if (!opacity.empty()) facts.opacity = std::min(facts.opacity, opacity.front());
  }
  if (dock.depth == depthWithAlpha && connection_.compositorRunning()) facts.meanAlpha = meanAlpha(topLevel);
  return facts;
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
