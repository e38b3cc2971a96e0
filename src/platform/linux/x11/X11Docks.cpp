#include "platform/linux/x11/X11Docks.h"

#include <xcb/shape.h>

#include <algorithm>

namespace veloria {

namespace {

constexpr std::uint32_t largestValue = 65535;
constexpr std::size_t edgeCount = 4;
constexpr std::size_t partialCount = 12;

StrutEdge edgeOf(std::span<const std::uint32_t> values, std::size_t index, int length) {
  StrutEdge edge{static_cast<int>(values[index]), 0, length - 1};
  if (values.size() == partialCount) {
    const int start = static_cast<int>(values[edgeCount + 2 * index]);
    const int end = static_cast<int>(values[edgeCount + 2 * index + 1]);
    if (start != 0 || end != 0) edge = {edge.thickness, start, end};
  }
  return edge;
}

// How far an edge's reservation reaches into a span of the monitor that begins `gap` pixels in from the root's edge.
int reach(const StrutEdge& edge, int gap, int alongStart, int alongEnd, int depth) {
  const bool beside = edge.end < alongStart || edge.start >= alongEnd;
  const int inside = edge.thickness - gap;
  return edge.thickness == 0 || beside || inside <= 0 || inside > depth / 2 ? 0 : inside;
}

struct Insets {
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;
};

void grow(Insets& insets, const Strut& strut, const PixelRect& m, const PixelRect& root) {
  insets.left = std::max(insets.left, reach(strut.left, m.x - root.x, m.y, m.bottom(), m.width));
  insets.right = std::max(insets.right, reach(strut.right, root.right() - m.right(), m.y, m.bottom(), m.width));
  insets.top = std::max(insets.top, reach(strut.top, m.y - root.y, m.x, m.right(), m.height));
  insets.bottom = std::max(insets.bottom, reach(strut.bottom, root.bottom() - m.bottom(), m.x, m.right(), m.height));
}

}  // namespace

std::optional<Strut> strutFromCardinals(std::span<const std::uint32_t> values, const PixelRect& root) {
  if (values.size() != edgeCount && values.size() != partialCount) return std::nullopt;
  for (const std::uint32_t value : values) {
    if (value > largestValue) return std::nullopt;
  }
  return Strut{edgeOf(values, 0, root.height), edgeOf(values, 1, root.height), edgeOf(values, 2, root.width),
               edgeOf(values, 3, root.width)};
}

std::optional<PanelEdge> mainPanelEdge(const PixelRect& monitor, const PixelRect& root,
                                       std::span<const DockStrut> docks) {
  std::optional<PanelEdge> best;
  std::pair<bool, int> most;
  for (const PanelEdge edge : {PanelEdge::top, PanelEdge::bottom}) {
    for (const DockStrut& dock : docks) {
      const PixelRect left = visiblePixels(monitor, root, std::span(&dock, 1));
      const int thickness = edge == PanelEdge::top ? left.y - monitor.y : monitor.bottom() - left.bottom();
      const std::pair size(dock.holdsTray, thickness * intersection(dock.bounds, monitor).width);
      if (thickness <= 0 || (best && size <= most)) continue;
      best = edge;
      most = size;
    }
  }
  return best;
}

PixelRect visiblePixels(const PixelRect& monitor, const PixelRect& root, std::span<const DockStrut> docks) {
  Insets insets;
  for (const DockStrut& dock : docks) {
    if (intersects(dock.bounds, monitor)) grow(insets, dock.strut, monitor, root);
  }
  return {monitor.x + insets.left, monitor.y + insets.top, monitor.width - insets.left - insets.right,
          monitor.height - insets.top - insets.bottom};
}

PixelRect visiblePixelsFromWorkArea(const PixelRect& monitor, const PixelRect& workArea) {
  if (!intersects(monitor, workArea)) return monitor;
  const auto kept = [&](int part) { return part > 0 && part <= monitor.height / 2 ? part : 0; };
  const int top = kept(workArea.y - monitor.y);
  const int bottom = kept(monitor.bottom() - workArea.bottom());
  return {monitor.x, monitor.y + top, monitor.width, monitor.height - top - bottom};
}

DockStrut strutAlong(const PixelRect& panel, const PixelRect& monitor, const PixelRect& root) {
  DockStrut dock{panel, {}};
  if (panel.y - monitor.y <= monitor.bottom() - panel.bottom()) {
    dock.strut.top = {panel.bottom() - root.y, panel.x, panel.right() - 1};
  } else {
    dock.strut.bottom = {root.bottom() - panel.y, panel.x, panel.right() - 1};
  }
  return dock;
}

namespace {

constexpr std::size_t mostWindows = 4096;
constexpr int deepestNesting = 16;
constexpr std::uint32_t mostTypes = 32;
constexpr std::uint32_t partialStrutWords = 12;
constexpr std::uint32_t strutWords = 4;

std::vector<xcb_window_t> candidates(X11Connection& connection) {
  const auto listCookie = connection.requestProperty(connection.root(), connection.atom(X11Atom::netClientList),
                                                     static_cast<std::uint32_t>(mostWindows));
  std::vector<xcb_window_t> windows = topLevelWindows(connection);
  const auto clients = connection.numbers(listCookie);
  windows.insert(windows.end(), clients.begin(), clients.end());
  std::sort(windows.begin(), windows.end());
  windows.erase(std::unique(windows.begin(), windows.end()), windows.end());
  std::erase_if(windows, [&](xcb_window_t window) { return connection.isOwn(window); });
  windows.resize(std::min(windows.size(), mostWindows));
  return windows;
}

struct Query {
  xcb_window_t window;
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_translate_coordinates_cookie_t position;
  xcb_get_property_cookie_t type;
  xcb_get_property_cookie_t partialStrut;
  xcb_get_property_cookie_t strut;
};

Query ask(X11Connection& connection, xcb_window_t window) {
  auto* raw = connection.raw();
  return {window,
          xcb_get_window_attributes(raw, window),
          xcb_get_geometry(raw, window),
          xcb_translate_coordinates(raw, window, connection.root(), 0, 0),
          connection.requestProperty(window, connection.atom(X11Atom::netWmWindowType), mostTypes),
          connection.requestProperty(window, connection.atom(X11Atom::netWmStrutPartial), partialStrutWords),
          connection.requestProperty(window, connection.atom(X11Atom::netWmStrut), strutWords)};
}

std::optional<Strut> strutOf(X11Connection& connection, const Query& query, const PixelRect& root) {
  const auto partial = strutFromCardinals(connection.numbers(query.partialStrut), root);
  const auto whole = strutFromCardinals(connection.numbers(query.strut), root);
  const auto& strut = partial ? partial : whole;
  return strut && !strut->empty() ? strut : std::nullopt;
}

DockWindow collect(X11Connection& connection, const Query& query, const PixelRect& root) {
  DockWindow dock;
  dock.window = query.window;
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes);
  const auto geometry = connection.reply(xcb_get_geometry_reply, query.geometry);
  const auto position = connection.reply(xcb_translate_coordinates_reply, query.position);
  const auto types = connection.numbers(query.type);
  dock.strut = strutOf(connection, query, root);
  if (!attributes || !geometry || !position) return {};
  dock.isDock = std::find(types.begin(), types.end(), connection.atom(X11Atom::netWmWindowTypeDock)) != types.end();
  dock.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  dock.depth = geometry->depth;
  dock.bounds = {position->dst_x, position->dst_y, geometry->width, geometry->height};
  return dock;
}

}  // namespace

std::vector<xcb_window_t> topLevelWindows(X11Connection& connection) {
  const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.raw(), connection.root()));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

xcb_window_t topLevelOf(X11Connection& connection, xcb_window_t window) {
  for (int depth = 0; depth < deepestNesting && window != XCB_WINDOW_NONE; ++depth) {
    const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.raw(), window));
    if (!tree) return XCB_WINDOW_NONE;
    if (tree->parent == connection.root()) return window;
    window = tree->parent;
  }
  return XCB_WINDOW_NONE;
}

xcb_window_t panelWithTray(X11Connection& connection, std::span<const DockWindow> docks) {
  const xcb_window_t manager = connection.trayManager();
  if (manager == XCB_WINDOW_NONE) return XCB_WINDOW_NONE;
  const xcb_window_t frame = topLevelOf(connection, manager);
  const std::uint32_t clientMask = ~xcb_get_setup(connection.raw())->resource_id_mask;
  std::vector<xcb_window_t> ofManager;
  for (const DockWindow& dock : docks) {
    if (dock.window == manager || topLevelOf(connection, dock.window) == frame) return dock.window;
    if (((dock.window ^ manager) & clientMask) == 0) ofManager.push_back(dock.window);
  }
  return ofManager.size() == 1 ? ofManager.front() : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

std::vector<DockWindow> findDocks(X11Connection& connection) {
  const PixelRect root = connection.rootRect();
  std::vector<Query> queries;
  for (const xcb_window_t window : candidates(connection)) queries.push_back(ask(connection, window));
  std::vector<DockWindow> docks;
  for (const Query& query : queries) {
    const DockWindow dock = collect(connection, query, root);
    if (dock.isDock || dock.strut) docks.push_back(dock);
  }
  return docks;
}

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
