#include "platform/linux/x11/X11PanelProbe.h"

#include <xcb/shape.h>

#include <algorithm>

#include "platform/linux/x11/X11Docks.h"

namespace veloria {

namespace {

/// A panel cut into more pieces than these counts as whole.
constexpr int mostShapeParts = 1024;

bool isWhole(const std::vector<PixelRect>& shape, const PixelRect& bounds) {
  return shape.size() == 1 && intersection(shape.front(), bounds) == bounds;
}

std::vector<PixelRect> shapeFrom(const xcb_shape_get_rectangles_reply_t& answer, int originX, int originY) {
  const int count = xcb_shape_get_rectangles_rectangles_length(&answer);
  if (count > mostShapeParts) return {};
  const auto* first = xcb_shape_get_rectangles_rectangles(&answer);
  std::vector<PixelRect> shape;
  std::transform(first, first + count, std::back_inserter(shape), [&](const xcb_rectangle_t& each) {
    return PixelRect{originX + each.x, originY + each.y, each.width, each.height};
  });
  // A window with an empty shape covers nothing, and "empty" stands for everything here.
  if (shape.empty()) shape.emplace_back();
  return shape;
}

}  // namespace

std::optional<PanelPlace> probePanel(X11Connection& connection, xcb_window_t window,
                                     std::span<const xcb_window_t> stack) {
  auto* raw = connection.raw();
  PanelPlace place;
  place.window = window;
  const auto attributesCookie = xcb_get_window_attributes(raw, window);
  place.topLevel = topLevelOf(connection, window);
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, attributesCookie);
  if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return std::nullopt;
  if (place.topLevel == XCB_WINDOW_NONE || connection.isOwn(place.topLevel)) return std::nullopt;
  const auto found = std::find(stack.begin(), stack.end(), place.topLevel);
  place.position = static_cast<std::size_t>(found - stack.begin());
  const auto geometryCookie = xcb_get_geometry(raw, place.topLevel);
  const bool shaped = connection.shape().present;
  const auto shapeCookie = shaped ? xcb_shape_get_rectangles(raw, place.topLevel, XCB_SHAPE_SK_BOUNDING)
                                  : xcb_shape_get_rectangles_cookie_t{};
  const auto geometry = connection.reply(xcb_get_geometry_reply, geometryCookie);
  const auto shape = shaped ? connection.reply(xcb_shape_get_rectangles_reply, shapeCookie) : nullptr;
  if (!geometry) return std::nullopt;
  const int border = geometry->border_width;
  place.bounds = {geometry->x, geometry->y, geometry->width + 2 * border, geometry->height + 2 * border};
  place.depth = geometry->depth;
  if (shape) place.shape = shapeFrom(*shape, geometry->x + border, geometry->y + border);
  if (isWhole(place.shape, place.bounds)) place.shape.clear();
  return place;
}

}  // namespace veloria
